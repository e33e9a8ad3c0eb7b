#include "bench/CKVProcessMemory.h"

#include <gtest/gtest.h>

using namespace Kelvor;

TEST(ProcessMemoryTest, ResidentMemoryIsReadFromTheStatusFields)
{
    char const status[] = "Name:\tbench\nVmPeak:\t  900 kB\nVmHWM:\t    512 kB\nVmRSS:\t    256 kB\n";
    EXPECT_EQ(CKVProcessMemory::fieldBytes(status, "VmRSS"), 256u * 1024u);
    EXPECT_EQ(CKVProcessMemory::fieldBytes(status, "VmHWM"), 512u * 1024u);
    EXPECT_EQ(CKVProcessMemory::fieldBytes(status, "Name"), 0u);
    EXPECT_EQ(CKVProcessMemory::fieldBytes(status, "VmSwap"), 0u);
    EXPECT_GT(CKVProcessMemory::residentBytes(), 0u);
    EXPECT_GE(CKVProcessMemory::peakResidentBytes(), CKVProcessMemory::residentBytes() / 2);
}
