#pragma once

#include "support/GLTestContext.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <string>

namespace Kelvor {

// Base of the fixtures that need an X display. Without one the test is
// skipped with a message, so that unit runs work anywhere; with
// TARNWICK_REQUIRE_DISPLAY=1 (scripts/test sets it) a missing display fails
// instead, so that GL tests cannot quietly stop running in CI. A derived
// SetUp calls this one first and returns when displayReady() is false.
class DisplayTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        std::string reason;
        if (GLTestContext::displayAvailable(&reason))
            return;
        if (displayRequired())
            FAIL() << "no X display: " << reason << " (TARNWICK_REQUIRE_DISPLAY=1)";
        GTEST_SKIP() << "no X display: " << reason << "; scripts/test starts Xvfb for these";
    }

    // False when SetUp skipped or failed the test.
    bool displayReady() const { return !IsSkipped() && !HasFatalFailure(); }

    // TARNWICK_REQUIRE_DISPLAY=1: a missing display is a failure, not a skip.
    static bool displayRequired()
    {
        char const* required = std::getenv("TARNWICK_REQUIRE_DISPLAY");
        return required != nullptr && std::strcmp(required, "1") == 0;
    }
};

} // namespace Kelvor
