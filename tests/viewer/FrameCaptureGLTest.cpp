#include <gtest/gtest.h>

#include "viewer/CKVCaptureCallback.h"
#include "viewer/CKVCaptureListener.h"
#include "viewer/CKVFrameCapture.h"

#include "ViewerOnHostWindow.h"

#include <osgDB/ReadFile>

#include <filesystem>
#include <string>
#include <unistd.h>
#include <vector>

namespace Kelvor {
namespace {

using namespace viewertest;
namespace fs = std::filesystem;

constexpr int kSize = 64;
osg::Vec4 const kClear(0.2f, 0.4f, 0.6f, 1.0f);

// Notes what the main camera looks like while the capture frame is drawn.
struct MainCameraProbe : osg::Camera::DrawCallback
{
    void operator()(osg::RenderInfo& renderInfo) const override
    {
        osg::Camera const* camera = renderInfo.getCurrentCamera();
        views.push_back(camera->getViewMatrix());
        frames.push_back(camera->getReferenceFrame());
    }
    mutable std::vector<osg::Matrixd> views;
    mutable std::vector<osg::Transform::ReferenceFrame> frames;
};

class RecordingListener : public CKVCaptureListener
{
public:
    void beginCapture(unsigned int width, unsigned int height, osg::Matrixd const&, osg::Matrixd const&) override
    {
        calls.push_back("begin " + std::to_string(width) + "x" + std::to_string(height));
    }
    void renderCaptureFrame(CKVViewer& viewer) override
    {
        calls.push_back(viewer.getSwapBuffers() ? "frame with swap" : "frame");
        CKVCaptureListener::renderCaptureFrame(viewer);
    }
    void endCapture() override { calls.push_back("end"); }

    std::vector<std::string> calls;
};

class CKVFrameCaptureGLTest : public ViewerOnHostWindowTest<kSize, kSize>
{
protected:
    void SetUp() override
    {
        ViewerOnHostWindowTest::SetUp();
        if (IsSkipped() || HasFatalFailure())
            return;
        mSetup->camera()->setClearColor(kClear);
        mDirectory = fs::temp_directory_path() / ("kv-capture-gl-" + std::to_string(::getpid()));
        fs::create_directories(mDirectory);
    }

    void TearDown() override
    {
        ViewerOnHostWindowTest::TearDown();
        std::error_code ignored;
        fs::remove_all(mDirectory, ignored);
    }

    std::string file(char const* name) const { return (mDirectory / name).string(); }

    fs::path mDirectory;
};

TEST_F(CKVFrameCaptureGLTest, OddSizeIsCapturedEvenAndTheWindowKeepsItsPicture)
{
    mSetup->frame();
    osg::ref_ptr<osg::Image> shown = mSetup->host().shown();

    CKVFrameCapture capture(mSetup->viewer(), mSetup->camera());
    std::string const path = file("odd.png");
    ASSERT_TRUE(capture.capture(path, 41, 31, mSetup->camera()->getViewMatrix(),
                                mSetup->camera()->getProjectionMatrix(), false));

    osg::ref_ptr<osg::Image> written = osgDB::readImageFile(path);
    ASSERT_TRUE(written.valid());
    EXPECT_EQ(written->s(), 40);
    EXPECT_EQ(written->t(), 30);
    EXPECT_TRUE(near(pixelAt(*written, 20, 15), kQuadColour));
    EXPECT_TRUE(near(pixelAt(*written, 1, 1), kClear));

    EXPECT_TRUE(samePixels(*mSetup->host().shown(), *shown)) << "the capture reached the window";
    EXPECT_TRUE(mSetup->viewer()->getSwapBuffers());
    EXPECT_EQ(mSetup->viewer()->getNumSlaves(), 0u);
}

TEST_F(CKVFrameCaptureGLTest, CaptureUsesTheHostCameraAndRestoresTheMainCamera)
{
    osg::ref_ptr<MainCameraProbe> probe = new MainCameraProbe;
    mSetup->camera()->setInitialDrawCallback(probe.get());
    osg::Matrixd const mainView = mSetup->camera()->getViewMatrix();
    osg::Matrixd const mainProjection = mSetup->camera()->getProjectionMatrix();
    osg::ref_ptr<osg::Viewport> const mainViewport = new osg::Viewport(*mSetup->camera()->getViewport());

    // The host camera looks half a unit further right: the quad sits in the
    // left half of its picture.
    osg::Matrixd const hostView = osg::Matrixd::translate(-0.5, 0.0, 0.0);
    CKVFrameCapture capture(mSetup->viewer(), mSetup->camera());
    ASSERT_TRUE(capture.capture(file("moved.png"), 40, 40, hostView, mainProjection, false));

    osg::Image const& image = *capture.getImage();
    EXPECT_TRUE(near(pixelAt(image, 12, 20), kQuadColour));
    EXPECT_TRUE(near(pixelAt(image, 32, 20), kClear));

    // During the frame the main camera showed the host's view too...
    ASSERT_EQ(probe->views.size(), 1u);
    EXPECT_EQ(probe->views[0], hostView);
    EXPECT_EQ(probe->frames[0], osg::Transform::RELATIVE_RF);
    // ...and afterwards it is as it was.
    EXPECT_EQ(mSetup->camera()->getViewMatrix(), mainView);
    EXPECT_EQ(mSetup->camera()->getProjectionMatrix(), mainProjection);
    EXPECT_EQ(mSetup->camera()->getReferenceFrame(), osg::Transform::ABSOLUTE_RF) << "not restored";
    EXPECT_EQ(mSetup->camera()->getViewport()->compare(*mainViewport), 0);

    // A thumbnail leaves the main camera alone even during its frame.
    ASSERT_TRUE(capture.capture(file("thumb.png"), 40, 40, hostView, mainProjection, true));
    ASSERT_EQ(probe->views.size(), 2u);
    EXPECT_EQ(probe->views[1], mainView);
    EXPECT_TRUE(near(pixelAt(*capture.getImage(), 12, 20), kQuadColour));
}

TEST_F(CKVFrameCaptureGLTest, CaptureIsMultisampled)
{
    // Turned by 30 degrees the quad has slanted edges; only a multisampled
    // target gives their pixels colours between quad and background.
    osg::Matrixd const turned = osg::Matrixd::rotate(osg::DegreesToRadians(30.0), osg::Z_AXIS);
    CKVFrameCapture capture(mSetup->viewer(), mSetup->camera());
    ASSERT_TRUE(capture.capture(file("smooth.png"), 64, 64, turned, mSetup->camera()->getProjectionMatrix(), true));
    osg::Image const& image = *capture.getImage();
    int blended = 0;
    for (int y = 0; y < image.t(); ++y)
        for (int x = 0; x < image.s(); ++x) {
            int const red = pixelAt(image, x, y).r();
            if (red > 60 && red < 245)
                ++blended;
        }
    EXPECT_GT(blended, 20);
}

TEST_F(CKVFrameCaptureGLTest, ListenerFramesTheCaptureAndRepeatedCapturesLeaveNoSlaves)
{
    RecordingListener listener;
    CKVFrameCapture capture(mSetup->viewer(), mSetup->camera());
    capture.setListener(&listener);
    for (int i = 0; i < 3; ++i)
        ASSERT_TRUE(capture.capture(file("again.png"), 23, 18, mSetup->camera()->getViewMatrix(),
                                    mSetup->camera()->getProjectionMatrix(), false));
    EXPECT_EQ(listener.calls, (std::vector<std::string>{"begin 22x18", "frame", "end", "begin 22x18", "frame", "end",
                                                         "begin 22x18", "frame", "end"}));
    EXPECT_EQ(mSetup->viewer()->getNumSlaves(), 0u);

    // Ordinary frames go on drawing the window afterwards.
    mSetup->frame();
    EXPECT_TRUE(near(pixelAt(*mSetup->host().shown(), kSize / 2, kSize / 2), kQuadColour));
}

TEST_F(CKVFrameCaptureGLTest, UnwritablePathReportsFailureAndRestoresAll)
{
    CKVFrameCapture capture(mSetup->viewer(), mSetup->camera());
    EXPECT_FALSE(capture.capture(file("missing/dir/x.png"), 16, 16, osg::Matrixd::translate(1, 0, 0),
                                 mSetup->camera()->getProjectionMatrix(), false));
    EXPECT_TRUE(mSetup->camera()->getViewMatrix().isIdentity());
    EXPECT_EQ(mSetup->viewer()->getNumSlaves(), 0u);
    EXPECT_TRUE(mSetup->viewer()->getSwapBuffers());
}

TEST_F(CKVFrameCaptureGLTest, DrawCallbackWritesOnceWhenRequested)
{
    osg::ref_ptr<CKVCaptureCallback> callback = new CKVCaptureCallback;
    mSetup->camera()->setPostDrawCallback(callback.get());
    std::string const path = file("callback.jpg");

    mSetup->frame();
    EXPECT_FALSE(fs::exists(path));

    EXPECT_FALSE(callback->request(path.c_str(), 0, 20));
    EXPECT_FALSE(callback->request("", 30, 20));
    ASSERT_TRUE(callback->request(path.c_str(), 30, 20));
    // Asked twice before a frame, it still writes once.
    ASSERT_TRUE(callback->request(path.c_str(), 30, 20));
    mSetup->frame();
    EXPECT_FALSE(callback->isRequested());
    osg::ref_ptr<osg::Image> written = osgDB::readImageFile(path);
    ASSERT_TRUE(written.valid());
    EXPECT_EQ(written->s(), 30);
    EXPECT_EQ(written->t(), 20);
    EXPECT_TRUE(near(pixelAt(*written, 2, 2), kClear, 12));

    fs::remove(path);
    mSetup->frame();
    EXPECT_FALSE(fs::exists(path));
    mSetup->camera()->setPostDrawCallback(nullptr);
}

} // namespace
} // namespace Kelvor
