#pragma once

#include "support/DisplayTest.h"
#include "support/GLTestContext.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace Kelvor {

// Fixture for tests that draw. Each test gets its own GLTestContext, closed
// in TearDown; without a display the test is skipped or fails as DisplayTest
// says.
//
// Header only: the test folders compile every *Test.cpp as a test program, so
// the fixture has no source file of its own.
class GLTest : public DisplayTest
{
protected:
    void SetUp() override
    {
        DisplayTest::SetUp();
        if (!displayReady())
            return;
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

private:
    std::unique_ptr<GLTestContext> mContext;
};

} // namespace Kelvor
