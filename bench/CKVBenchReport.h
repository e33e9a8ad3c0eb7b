#pragma once

#include <ostream>
#include <string>
#include <utility>
#include <vector>

namespace Kelvor {

// What one benchmark run measured, as "key=value" lines in the order they
// were added: easy to read by eye and by the script that makes the tables.
class CKVBenchReport
{
public:
    void set(std::string const& key, double value);
    void set(std::string const& key, std::string const& value);
    void write(std::ostream& out) const;

private:
    std::vector<std::pair<std::string, std::string>> mEntries;
};

} // namespace Kelvor
