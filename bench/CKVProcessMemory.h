#pragma once

#include <cstdint>

namespace Kelvor {

// The process's resident memory from /proc/self/status, in bytes; 0 where
// the field cannot be read.
class CKVProcessMemory
{
public:
    static std::uint64_t residentBytes();
    static std::uint64_t peakResidentBytes();
    // Parses one "Name:   1234 kB" field out of a status text.
    static std::uint64_t fieldBytes(char const* statusText, char const* field);
};

} // namespace Kelvor
