#pragma once

#include "support/GLTestContext.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

namespace Kelvor {

// Fixture for tests that draw. Each test gets its own GLTestContext, closed
// in TearDown. Without an X display the test is skipped with a message, so
// that unit runs work anywhere; with TARNWICK_REQUIRE_DISPLAY=1 (scripts/test
// sets it) a missing display fails instead, so that GL tests cannot quietly
// stop running in CI.
//
// Header only: the test folders compile every *Test.cpp as a test program, so
// the fixture has no source file of its own.
class GLTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        std::string reason;
        if (!GLTestContext::displayAvailable(&reason))
        {
            if (displayRequired())
                FAIL() << "GL test without a display: " << reason << " (TARNWICK_REQUIRE_DISPLAY=1)";
            GTEST_SKIP() << "GL test skipped: " << reason << "; scripts/test starts Xvfb for these";
        }
        mContext = std::make_unique<GLTestContext>(contextWidth(), contextHeight());
        ASSERT_TRUE(mContext->valid()) << mContext->error();
    }

    void TearDown() override
    {
        if (mContext)
            mContext->close();
        mContext.reset();
    }

    // Window size of the test's context; override for larger pictures.
    virtual int contextWidth() const { return GLTestContext::kDefaultSize; }
    virtual int contextHeight() const { return GLTestContext::kDefaultSize; }

    GLTestContext& context() { return *mContext; }

    // TARNWICK_REQUIRE_DISPLAY=1: a missing display is a failure, not a skip.
    static bool displayRequired()
    {
        char const* required = std::getenv("TARNWICK_REQUIRE_DISPLAY");
        return required != nullptr && std::strcmp(required, "1") == 0;
    }

private:
    std::unique_ptr<GLTestContext> mContext;
};

} // namespace Kelvor
