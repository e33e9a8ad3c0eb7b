#pragma once

// The X display the GL tests of this folder share. The host windows they
// draw into are support/HostX11Window.

#include "support/HostX11Window.h"
#include "support/XDisplayRetry.h"

#include <cstdlib>
#include <cstring>

namespace Kelvor {
namespace viewertest {

// The timer renders on its own thread while the test's thread also talks to
// X, so Xlib must be thread-aware before its first call.
inline int const kXlibThreads = XInitThreads();

// TARNWICK_REQUIRE_DISPLAY=1 turns a missing display into a failure.
inline bool displayRequired()
{
    char const* required = std::getenv("TARNWICK_REQUIRE_DISPLAY");
    return required && std::strcmp(required, "1") == 0;
}

// An X server without -noreset (Xvfb's default) resets whenever its last
// client leaves, and refuses connections while it does; one connection kept
// for the whole test program keeps the server from resetting between tests.
inline bool displayAvailable()
{
    static Display* const keepAlive = openTestDisplay();
    return keepAlive != nullptr;
}

// Base of the fixtures that need X: skips without a display, or fails when
// one is required. Derived SetUps return early when IsSkipped().
class HostDisplayTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        if (displayAvailable())
            return;
        if (displayRequired())
            FAIL() << "no X display (TARNWICK_REQUIRE_DISPLAY=1)";
        GTEST_SKIP() << "no X display; scripts/test starts Xvfb for these";
    }
};

} // namespace viewertest
} // namespace Kelvor
