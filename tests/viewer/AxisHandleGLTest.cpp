// The axis handle and the GIS camera in a render context on a host window:
// what the user sees in the window's bottom-left corner, and what a capture
// leaves out.
#include "binding/RenderContextFixture.h"

#include "binding/CKVRenderContextCaptureListener.h"
#include "effects/CKVPostProcessNode.h"
#include "scene/CKVSceneNodeImp.h"
#include "viewer/CKVAxisHandle.h"
#include "viewer/CKVGISCamera.h"

#include "TarnwickRender/CKVCamera.h"
#include "TarnwickRender/CKVVisibilityState.h"

#include <osgDB/ReadFile>

#include <cstdio>
#include <memory>
#include <vector>

namespace Kelvor {
namespace {

// Arrow pixels by colour in a region, with their centres. Coordinates are
// pixels from the bottom-left corner, as the viewport counts them.
struct ArrowPixels
{
    int count[3] = {0, 0, 0};
    double sumX[3] = {0.0, 0.0, 0.0};
    double sumY[3] = {0.0, 0.0, 0.0};

    double centreX(int colour) const { return count[colour] ? sumX[colour] / count[colour] : -1.0; }
    double centreY(int colour) const { return count[colour] ? sumY[colour] / count[colour] : -1.0; }
    int total() const { return count[0] + count[1] + count[2]; }
};

// Red, green or blue clearly above the other two; -1 for anything else
// (the grey background in particular).
int arrowColour(unsigned char const* rgb)
{
    for (int c = 0; c < 3; ++c) {
        int const value = rgb[c];
        int const other1 = rgb[(c + 1) % 3];
        int const other2 = rgb[(c + 2) % 3];
        if (value > 60 && other1 * 2 < value && other2 * 2 < value)
            return c;
    }
    return -1;
}

class AxisHandleGLTest : public RenderContextFixture
{
protected:
    static constexpr int kSize = 232;

    void SetUp() override
    {
        RenderContextFixture::SetUp();
        if (IsSkipped() || HasFatalFailure())
            return;
        // Larger than the fixture's window: the handle starts 200 pixels wide.
        mHost = std::make_unique<TestHostWindow>(kSize, kSize);
        ASSERT_TRUE(mHost->valid());
        mGraphicsContext = CKVGraphicsContext(&mHost->windowData(), &mScene);
        CKVRenderConfig config;
        CKVBackGroundConfig background;
        background.setBackGroundColor(CKVPoint3D(0.5, 0.5, 0.5));
        config.setBackGroundConfig(background);
        mScene.setRenderConfig(config);
        ASSERT_NE(start(), nullptr);
        takeOverTicks();
    }

    void look(CKVPoint3D const& position)
    {
        CKVCamera camera;
        camera.setLookAt(position, CKVPoint3D(0.0, 0.0, 0.0), CKVVector3D(0.0, 0.0, 1.0));
        camera.setAspect(1.0);
        mCamera = camera;
        bool applied = false;
        ASSERT_TRUE(tickWith([camera](CKVRenderContext* context) { return context->applyCamera(camera); }, &applied));
        ASSERT_TRUE(applied);
        renderFrames(2);
    }

    void renderFrames(int frames)
    {
        for (int i = 0; i < frames; ++i)
            mContext->onTick(++mTickMs);
    }

    // What the window shows in [0, width) x [0, height) from its bottom left.
    ArrowPixels shownIn(int width, int height) const
    {
        std::vector<unsigned char> const rgb = mHost->readWindow(kSize, kSize);
        EXPECT_EQ(rgb.size(), static_cast<size_t>(kSize * kSize * 3));
        ArrowPixels pixels;
        if (rgb.size() != static_cast<size_t>(kSize * kSize * 3))
            return pixels;
        for (int y = 0; y < height && y < kSize; ++y) {
            int const row = kSize - 1 - y;
            for (int x = 0; x < width && x < kSize; ++x)
                add(pixels, &rgb[(row * kSize + x) * 3], x, y);
        }
        return pixels;
    }

    static void add(ArrowPixels& pixels, unsigned char const* rgb, int x, int y)
    {
        int const colour = arrowColour(rgb);
        if (colour < 0)
            return;
        ++pixels.count[colour];
        pixels.sumX[colour] += x;
        pixels.sumY[colour] += y;
    }

    CKVCamera mCamera;
};

TEST_F(AxisHandleGLTest, ArrowsFillTheBottomLeftCornerAndShrinkAtTheFirstResize)
{
    look(CKVPoint3D(30.0, -40.0, 20.0));
    ArrowPixels const corner = shownIn(200, 200);
    EXPECT_GT(corner.count[0], 40) << "red x arrow";
    EXPECT_GT(corner.count[1], 40) << "green y arrow";
    EXPECT_GT(corner.count[2], 40) << "blue z arrow";
    // The tips lie 100 pixels from the centre of the 200-pixel view.
    EXPECT_EQ(shownIn(kSize, kSize).total(), shownIn(202, 202).total());

    bool resized = false;
    ASSERT_TRUE(tickWith([](CKVRenderContext* context) { return context->setViewPort(kSize, kSize); }, &resized));
    ASSERT_TRUE(resized);
    renderFrames(2);
    ArrowPixels const small = shownIn(101, 101);
    EXPECT_GT(small.count[0], 10);
    EXPECT_GT(small.count[1], 10);
    EXPECT_GT(small.count[2], 10);
    EXPECT_LT(small.total(), corner.total());
    EXPECT_EQ(shownIn(kSize, kSize).total(), small.total()) << "nothing of the handle beyond 100 pixels";
}

TEST_F(AxisHandleGLTest, ArrowsTurnWithTheCamera)
{
    // From -y with z up: x points right, z up, y away from the viewer.
    look(CKVPoint3D(0.0, -50.0, 0.0));
    ArrowPixels const front = shownIn(200, 200);
    ASSERT_GT(front.count[0], 40);
    ASSERT_GT(front.count[2], 40);
    EXPECT_GT(front.centreX(0), 135.0);
    EXPECT_NEAR(front.centreY(0), 100.0, 8.0);
    EXPECT_GT(front.centreY(2), 135.0);
    EXPECT_NEAR(front.centreX(2), 100.0, 8.0);

    // A quarter turn about z to +x: now y points right, x at the viewer.
    look(CKVPoint3D(50.0, 0.0, 0.0));
    ArrowPixels const side = shownIn(200, 200);
    ASSERT_GT(side.count[1], 40);
    ASSERT_GT(side.count[0], 10);
    EXPECT_GT(side.centreX(1), 135.0);
    EXPECT_NEAR(side.centreX(0), 100.0, 8.0) << "seen end on, the red head sits on the centre";
    EXPECT_NEAR(side.centreY(0), 100.0, 8.0);
    EXPECT_GT(side.centreY(2), 135.0) << "z stays up";
}

TEST_F(AxisHandleGLTest, CaptureLeavesTheHandleOutAndTheWindowKeepsIt)
{
    look(CKVPoint3D(30.0, -40.0, 20.0));
    ASSERT_GT(shownIn(200, 200).total(), 100);

    CKVAxisHandle* handle = mContext->getAxisHandle();
    ASSERT_NE(handle, nullptr);
    auto visible = [handle]() {
        CKVSceneNodeState const* state = handle->getRootNode()->getStateSet()->getState(CKVSceneNodeState::kVisibility);
        return !state || static_cast<CKVVisibilityState const*>(state)->getVisibility(CKVVisibilityState::kDisplay);
    };
    {
        // Hidden exactly for the capture frame.
        CKVRenderContextCaptureListener listener(*mContext, mCamera, kSize, kSize);
        listener.beginCapture(kSize, kSize, osg::Matrixd(), osg::Matrixd());
        EXPECT_FALSE(visible());
        listener.endCapture();
        EXPECT_TRUE(visible());
    }

    std::string const path = "/tmp/tarnwick-axis-handle-capture.png";
    std::remove(path.c_str());
    CKVCamera const camera = mCamera;
    bool written = false;
    ASSERT_TRUE(tickWith(
        [&path, camera](CKVRenderContext* context) {
            return context->getCapture(path.c_str(), CKVVec2<unsigned int>(kSize, kSize), camera, false);
        },
        &written));
    ASSERT_TRUE(written);
    osg::ref_ptr<osg::Image> image = osgDB::readRefImageFile(path);
    std::remove(path.c_str());
    ASSERT_TRUE(image.valid());
    ASSERT_EQ(image->s(), kSize);
    ASSERT_EQ(image->t(), kSize);
    ArrowPixels captured;
    for (int y = 0; y < kSize; ++y)
        for (int x = 0; x < kSize; ++x)
            add(captured, image->data(x, y), x, y);
    EXPECT_EQ(captured.total(), 0);
    unsigned char const* centre = image->data(kSize / 2, kSize / 2);
    EXPECT_NEAR(centre[0], 128, 6) << "the background is there";

    EXPECT_TRUE(visible());
    renderFrames(2);
    EXPECT_GT(shownIn(200, 200).total(), 100) << "back in the window after the capture";
}

TEST_F(AxisHandleGLTest, GISCameraIsAChildOfTheRootAndFollowsTheViewport)
{
    CKVGISCamera* gis = mContext->getGISCamera();
    ASSERT_NE(gis, nullptr);
    CKVPostProcessNode* root = mContext->getRoot();
    EXPECT_EQ(root->getGISCamera(), gis);
    EXPECT_LT(root->getChildIndex(gis), root->getNumChildren());
    EXPECT_EQ(gis->getGraphicsContext(), mContext->getMainCamera()->getGraphicsContext());

    bool resized = false;
    ASSERT_TRUE(tickWith([](CKVRenderContext* context) { return context->setViewPort(160, 120); }, &resized));
    ASSERT_TRUE(resized);
    ASSERT_NE(gis->getViewport(), nullptr);
    EXPECT_EQ(gis->getViewport()->width(), 160);
    EXPECT_EQ(gis->getViewport()->height(), 120);
}

} // namespace
} // namespace Kelvor
