#include "bench/CKVProcessMemory.h"

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string>

namespace Kelvor {

namespace {

std::string readStatus()
{
    std::ifstream in("/proc/self/status");
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

} // namespace

std::uint64_t CKVProcessMemory::fieldBytes(char const* statusText, char const* field)
{
    std::string const key = std::string("\n") + field + ":";
    std::string const text = std::string("\n") + statusText;
    std::size_t const at = text.find(key);
    if (at == std::string::npos)
        return 0;
    char const* value = text.c_str() + at + key.size();
    char* end = nullptr;
    unsigned long long const kilobytes = std::strtoull(value, &end, 10);
    if (end == value)
        return 0;
    return static_cast<std::uint64_t>(kilobytes) * 1024u;
}

std::uint64_t CKVProcessMemory::residentBytes()
{
    return fieldBytes(readStatus().c_str(), "VmRSS");
}

std::uint64_t CKVProcessMemory::peakResidentBytes()
{
    return fieldBytes(readStatus().c_str(), "VmHWM");
}

} // namespace Kelvor
