#include <gtest/gtest.h>

#include "viewer/CKVFrameCapture.h"
#include "viewer/CKVGraphicsWindowEGL.h"
#include "viewer/CKVOSGCamera.h"
#include "viewer/CKVViewer.h"

#include "ViewerOnHostWindow.h"

#include <osg/GLObjects>
#include <osgDB/ReadFile>

#include <cstdlib>
#include <filesystem>
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
        mCamera = new CKVOSGCamera;
        mCamera->setGraphicsContext(mWindow.get());
        mCamera->setViewport(0, 0, kSize, kSize);
        mCamera->setProjectionMatrixAsOrtho2D(-1.0, 1.0, -1.0, 1.0);
        mCamera->setComputeNearFarMode(osg::CullSettings::DO_NOT_COMPUTE_NEAR_FAR);
        mCamera->setClearMask(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        mCamera->setClearColor(kClear);
        mViewer = new CKVViewer;
        mViewer->setCamera(mCamera.get());
        mViewer->setThreadingModel(osgViewer::ViewerBase::SingleThreaded);
        mScene = new osg::Group;
        mScene->addChild(makeQuad().get());
        mViewer->setSceneData(mScene.get());
        mViewer->realize();
        ASSERT_TRUE(mViewer->isRealized());
    }

    void TearDown() override
    {
        if (mViewer.valid()) {
            if (mWindow->makeCurrent()) {
                mScene->releaseGLObjects(mWindow->getState());
                osg::flushAllDeletedGLObjects(mWindow->getState()->getContextID());
                mWindow->releaseContext();
            }
            mViewer->setSceneData(nullptr);
            mViewer = nullptr;
        }
        mCamera = nullptr;
        if (mWindow.valid())
            mWindow->close();
        mWindow = nullptr;
        if (!mDisplay.empty())
            ::setenv("DISPLAY", mDisplay.c_str(), 1);
    }

    void frame()
    {
        mViewer->advance(DBL_MAX);
        mViewer->updateTraversal();
        mViewer->renderingTraversals();
    }

    std::string mDisplay;
    osg::ref_ptr<CKVGraphicsWindowEGL> mWindow;
    osg::ref_ptr<CKVOSGCamera> mCamera;
    osg::ref_ptr<CKVViewer> mViewer;
    osg::ref_ptr<osg::Group> mScene;
};

TEST_F(CKVGraphicsWindowEGLGLTest, DrawsWithoutAnyDisplay)
{
    EXPECT_STREQ(mWindow->className(), "CKVGraphicsWindowEGL");
    frame();
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
    CKVFrameCapture capture(mViewer.get(), mCamera.get());
    ASSERT_TRUE(capture.capture(path.string(), 200, 120, osg::Matrixd(), mCamera->getProjectionMatrix(), true));
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
