#pragma once

#include "support/GLTestContext.h"

#include <osg/DisplaySettings>

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
    // A render context asks for GL3 shaders process-wide, and the stock
    // OpenSceneGraph state of later tests then changes. Every test leaves
    // the hint (and the shader values it sets) as it found it, so that a
    // test program gives the same results run as one process as run one
    // test per process. Restored in the destructor, after every derived
    // fixture's TearDown has closed its contexts. (DisplaySettings' own copy
    // does not carry the hint over, hence the hint alone.)
    DisplayTest() : mShaderHint(osg::DisplaySettings::instance()->getShaderHint()) {}
    ~DisplayTest() override { osg::DisplaySettings::instance()->setShaderHint(mShaderHint, true); }

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

private:
    osg::DisplaySettings::ShaderHint mShaderHint;
};

} // namespace Kelvor
