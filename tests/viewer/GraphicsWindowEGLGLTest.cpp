#include <gtest/gtest.h>

#include "viewer/CKVFrameCapture.h"
#include "viewer/CKVGraphicsWindowEGL.h"

#include "ViewerOnHostWindow.h"

#include <osgDB/ReadFile>

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <unistd.h>

namespace Kelvor {
namespace {

using namespace viewertest;
namespace fs = std::filesystem;

constexpr int kSize = 64;
osg::Vec4 const kClear(0.1f, 0.3f, 0.5f, 1.0f);

// The viewer on a headless window, with no X display in the environment:
// what a render server has.
class CKVGraphicsWindowEGLGLTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        if (char const* display = std::getenv("DISPLAY"))
            mDisplay = display;
        ::unsetenv("DISPLAY");

        mWindow = new CKVGraphicsWindowEGL(CKVGraphicsWindowEGL::createTraits(kSize, kSize, 0, 8).get());
        if (!mWindow->valid()) {
            if (displayRequired())
                FAIL() << "no EGL context";
            GTEST_SKIP() << "no EGL context on this machine";
        }
        mRig = std::make_unique<ViewerRig>(mWindow.get(), kSize, kSize);
        mRig->camera()->setClearColor(kClear);
        ASSERT_TRUE(mRig->viewer()->isRealized());
    }

    void TearDown() override
    {
        mRig.reset();
        if (mWindow.valid())
            mWindow->close();
        mWindow = nullptr;
        if (!mDisplay.empty())
            ::setenv("DISPLAY", mDisplay.c_str(), 1);
    }

    std::string mDisplay;
    osg::ref_ptr<CKVGraphicsWindowEGL> mWindow;
    std::unique_ptr<ViewerRig> mRig;
};

TEST_F(CKVGraphicsWindowEGLGLTest, DrawsWithoutAnyDisplay)
{
    mRig->frame();
    ASSERT_TRUE(mWindow->makeCurrent());
    osg::ref_ptr<osg::Image> image = new osg::Image;
    image->readPixels(0, 0, kSize, kSize, GL_RGBA, GL_UNSIGNED_BYTE);
    mWindow->releaseContext();
    EXPECT_TRUE(near(pixelAt(*image, 1, 1), kClear));
    EXPECT_TRUE(near(pixelAt(*image, kSize / 2, kSize / 2), kQuadColour));
}

TEST_F(CKVGraphicsWindowEGLGLTest, CapturesLargerThanItselfToFile)
{
    fs::path const path = fs::temp_directory_path() / ("kv-headless-" + std::to_string(::getpid()) + ".png");
    CKVFrameCapture capture(mRig->viewer(), mRig->camera());
    ASSERT_TRUE(capture.capture(path.string(), 200, 120, osg::Matrixd(), mRig->camera()->getProjectionMatrix(), true));
    osg::ref_ptr<osg::Image> written = osgDB::readImageFile(path.string());
    fs::remove(path);
    ASSERT_TRUE(written.valid());
    EXPECT_EQ(written->s(), 200);
    EXPECT_EQ(written->t(), 120);
    EXPECT_TRUE(near(pixelAt(*written, 100, 60), kQuadColour));
    EXPECT_TRUE(near(pixelAt(*written, 2, 2), kClear));
}

} // namespace
} // namespace Kelvor
