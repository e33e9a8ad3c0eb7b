#include "RenderContextFixture.h"

#include "binding/CKVRenderContextCaptureListener.h"
#include "effects/CKVPostProcessNode.h"

#include "TarnwickGeometry/KVMatrixConvert.h"
#include "TarnwickRender/CKVCamera.h"

#include <osg/NodeCallback>
#include <osgDB/ReadFile>

#include <cstdio>
#include <mutex>
#include <vector>

namespace Kelvor {
namespace {

// Records the main camera's view matrix at each cull of the scene.
class ViewRecorder : public osg::NodeCallback
{
public:
    explicit ViewRecorder(osg::Camera* mainCamera) : mMainCamera(mainCamera) {}
    void operator()(osg::Node* node, osg::NodeVisitor* visitor) override
    {
        {
            std::lock_guard<std::mutex> lock(mMutex);
            mViews.push_back(mMainCamera->getViewMatrix());
        }
        traverse(node, visitor);
    }
    std::vector<osg::Matrixd> views()
    {
        std::lock_guard<std::mutex> lock(mMutex);
        return mViews;
    }

private:
    osg::Camera* mMainCamera;
    std::mutex mMutex;
    std::vector<osg::Matrixd> mViews;
};

class RenderContextCaptureGLTest : public RenderContextFixture
{
protected:
    void SetUp() override
    {
        RenderContextFixture::SetUp();
        if (IsSkipped() || HasFatalFailure())
            return;
        CKVRenderConfig config;
        CKVBackGroundConfig background;
        background.setBackGroundColor(CKVPoint3D(0.8, 0.2, 0.4));
        config.setBackGroundConfig(background);
        mScene.setRenderConfig(config);
        mCamera.setLookAt(CKVPoint3D(0.0, -30.0, 10.0), CKVPoint3D(0.0, 0.0, 0.0), CKVVector3D(0.0, 0.0, 1.0));
        ASSERT_NE(start(), nullptr);
        takeOverTicks();
    }

    // The capture as the host asks for it: a command in the drain.
    bool capture(std::string const& path, unsigned int width, unsigned int height, bool thumbnail)
    {
        bool written = false;
        CKVCamera const camera = mCamera;
        EXPECT_TRUE(tickWith(
            [&, camera](CKVRenderContext* context) {
                return context->getCapture(path.c_str(), CKVVec2<unsigned int>(width, height), camera, thumbnail);
            },
            &written));
        return written;
    }

    std::string outputPath(char const* name) const { return std::string("/tmp/tarnwick-capture-") + name; }

    CKVCamera mCamera;
};

TEST_F(RenderContextCaptureGLTest, OddSizeRoundsDownAndTheCaptureShowsTheBackground)
{
    std::string const path = outputPath("odd.png");
    std::remove(path.c_str());
    ASSERT_TRUE(capture(path, 101, 77, false));
    osg::ref_ptr<osg::Image> image = osgDB::readRefImageFile(path);
    std::remove(path.c_str());
    ASSERT_TRUE(image.valid());
    EXPECT_EQ(image->s(), 100);
    EXPECT_EQ(image->t(), 76);
    unsigned char const* centre = image->data(50, 38);
    EXPECT_NEAR(centre[0], 204, 6);
    EXPECT_NEAR(centre[1], 51, 6);
    EXPECT_NEAR(centre[2], 102, 6);
    // The window's viewport is back after the capture's resize.
    int width = 0, height = 0;
    ASSERT_TRUE(mContext->getViewPort(width, height));
    EXPECT_EQ(width, kWidth);
    EXPECT_EQ(height, kHeight);
}

TEST_F(RenderContextCaptureGLTest, OnlyADifferentSizeResizesThePasses)
{
    CKVRenderContextCaptureListener sameSize(*mContext, mCamera, kWidth, kHeight);
    sameSize.beginCapture(kWidth, kHeight, osg::Matrixd(), osg::Matrixd());
    EXPECT_FALSE(sameSize.resized());
    sameSize.endCapture();

    CKVRenderContextCaptureListener otherSize(*mContext, mCamera, kWidth, kHeight);
    otherSize.beginCapture(40, 20, toOsgMatrix(mCamera.getViewMatrix()), toOsgMatrix(mCamera.getProjectMatrix()));
    EXPECT_TRUE(otherSize.resized());
    EXPECT_EQ(mContext->getRoot()->getViewport()->width(), 40);
    osg::Vec3f position;
    mContext->getRoot()->getStateSet()->getUniform("camPos_W")->get(position);
    EXPECT_EQ(position, osg::Vec3f(0.0f, -30.0f, 10.0f));
    otherSize.endCapture();
    EXPECT_EQ(mContext->getRoot()->getViewport()->width(), kWidth);
    mContext->getRoot()->getStateSet()->getUniform("camPos_W")->get(position);
    EXPECT_EQ(position, osg::Vec3f(0.0f, 0.0f, 0.0f));
}

TEST_F(RenderContextCaptureGLTest, AThumbnailLeavesTheMainCameraAlone)
{
    osg::Matrixd const mainView = mContext->getMainCamera()->getViewMatrix();
    osg::Matrixd const captureView = toOsgMatrix(mCamera.getViewMatrix());
    osg::ref_ptr<ViewRecorder> recorder = new ViewRecorder(mContext->getMainCamera());
    mContext->getRoot()->addCullCallback(recorder.get());

    std::string const path = outputPath("thumbnail.png");
    ASSERT_TRUE(capture(path, kWidth, kHeight, true));
    std::vector<osg::Matrixd> const thumbnailViews = recorder->views();
    ASSERT_FALSE(thumbnailViews.empty());
    for (osg::Matrixd const& view : thumbnailViews)
        EXPECT_EQ(view, mainView);

    // Without the thumbnail flag the main camera looks through the host's
    // camera for the frame, and afterwards looks as before.
    ASSERT_TRUE(capture(path, kWidth, kHeight, false));
    std::vector<osg::Matrixd> const views = recorder->views();
    bool sawCaptureView = false;
    for (std::size_t i = thumbnailViews.size(); i < views.size(); ++i)
        sawCaptureView = sawCaptureView || views[i] == captureView;
    EXPECT_TRUE(sawCaptureView);
    EXPECT_EQ(mContext->getMainCamera()->getViewMatrix(), mainView);
    mContext->getRoot()->removeCullCallback(recorder.get());
    std::remove(path.c_str());
}

} // namespace
} // namespace Kelvor
