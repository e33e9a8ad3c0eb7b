#include "bench/CKVBenchReport.h"

#include <cstdio>

namespace Kelvor {

void CKVBenchReport::set(std::string const& key, double value)
{
    char text[64];
    std::snprintf(text, sizeof text, "%.6g", value);
    set(key, std::string(text));
}

void CKVBenchReport::set(std::string const& key, std::string const& value)
{
    for (auto& entry : mEntries) {
        if (entry.first == key) {
            entry.second = value;
            return;
        }
    }
    mEntries.emplace_back(key, value);
}

void CKVBenchReport::write(std::ostream& out) const
{
    for (auto const& entry : mEntries)
        out << entry.first << '=' << entry.second << '\n';
    out.flush();
}

} // namespace Kelvor
