#pragma once

#include "host/HostStandIns.h"

#include <gtest/gtest.h>

namespace Kelvor {
namespace apptest {

// The viewer's content built on the host's in-memory stand-ins, with no
// backend loaded.
class MemoryBackendTest : public ::testing::Test
{
private:
    hosttest::MemoryFactoriesScope mFactories;
};

} // namespace apptest
} // namespace Kelvor
