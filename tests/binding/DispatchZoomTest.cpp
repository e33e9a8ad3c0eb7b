#include "DispatchTestContexts.h"

#include "binding/KVRenderCommandDispatchFactory.h"

#include "TarnwickGeometry/CKVPlane.h"
#include "TarnwickGeometry/CKVRay3D.h"
#include "TarnwickRender/CKVEvent.h"
#include "TarnwickRender/CKVRCZoomCamera.h"
#include "TarnwickRender/CKVRenderCommandDispatch.h"
#include "TarnwickRender/CKVScene.h"

#include <gtest/gtest.h>

namespace Kelvor {
namespace {

// Without a window there is no depth to read, so the zoom works about the
// event's world position, as it does over empty space.
class DispatchZoomTest : public ::testing::Test
{
protected:
    void SetUp() override { mScene.setViewportSize(200, 100); }

    // Looking along +y at the origin from `distance` away, z up.
    void placeCamera(double distance)
    {
        CKVCamera camera;
        camera.setAspect(2.0);
        camera.setNearFar(0.01, 1.0e9);
        camera.setLookAt(CKVPoint3D(0.0, -distance, 0.0), CKVPoint3D(), CKVVector3D(0.0, 0.0, 1.0));
        mScene.setCamera(camera);
    }

    // Where the ray under the cursor meets the plane y = 0.
    CKVPoint3D underCursor() const
    {
        CKVRay3D ray;
        CKVPoint3D hit;
        EXPECT_TRUE(mScene.getSelectRay(kPixel, ray));
        EXPECT_TRUE(ray.hitPlane(CKVPlane(CKVPoint3D(), CKVVector3D(0.0, 1.0, 0.0)), hit));
        return hit;
    }

    bool zoom(CKVRenderContext* context, CKVEvent::Wheel wheel, bool sync = false)
    {
        CKVEvent event(&mScene);
        event.setNDCPos(kPixel);
        event.setWorldPos(underCursor());
        event.setMouseWheel(wheel);
        CKVRCZoomCamera command(event);
        command.setSync(sync);
        kv_shared_ptr<CKVRenderCommandDispatch> dispatch(createRenderCommandDispatch(CKVRenderCommand::kZoomCamera));
        return dispatch->dispatch(context, command);
    }

    static constexpr CKVPoint3D kPixel{150.0, 30.0, 0.0};
    CKVScene mScene;
    RecordingContext mContext;
};

TEST_F(DispatchZoomTest, ZoomingKeepsThePointUnderTheCursor)
{
    placeCamera(10.0);
    CKVPoint3D const focus = underCursor();
    unsigned int const changes = mScene.getCameraChangeCount();

    ASSERT_TRUE(zoom(&mContext, CKVEvent::kWheelAwayFromUser));
    ASSERT_EQ(mContext.cameras.size(), 1u);
    EXPECT_NEAR(mContext.cameras.back().getDistance(), 7.5, 1e-9);
    EXPECT_TRUE(mScene.getCamera().getPosition().isEqualTo(mContext.cameras.back().getPosition(), 1e-12));
    EXPECT_TRUE(underCursor().isEqualTo(focus, 1e-9));
    // Only an asynchronous zoom tells the scene that its camera moved.
    EXPECT_EQ(mScene.getCameraChangeCount(), changes + 1);

    ASSERT_TRUE(zoom(&mContext, CKVEvent::kWheelTowardsUser, true));
    EXPECT_NEAR(mContext.cameras.back().getDistance(), 7.5 * 1.25, 1e-9);
    EXPECT_TRUE(underCursor().isEqualTo(focus, 1e-9));
    EXPECT_EQ(mScene.getCameraChangeCount(), changes + 1);

    // A failed apply puts the scene's camera back.
    CKVPoint3D const position = mScene.getCamera().getPosition();
    mContext.answer = false;
    EXPECT_FALSE(zoom(&mContext, CKVEvent::kWheelAwayFromUser));
    EXPECT_TRUE(mScene.getCamera().getPosition().isEqualTo(position, 1e-12));

    ForeignContext foreign;
    EXPECT_FALSE(zoom(&foreign, CKVEvent::kWheelAwayFromUser));
    EXPECT_EQ(mContext.cameras.size(), 3u);
}

// Outside the configured distances (0.1 to 1e7 by default) a camera may
// always move back towards them, never further out.
TEST_F(DispatchZoomTest, DistanceLimitsStopOnlyTheMoveFurtherOut)
{
    placeCamera(0.12);
    EXPECT_FALSE(zoom(&mContext, CKVEvent::kWheelAwayFromUser));
    EXPECT_TRUE(mContext.cameras.empty());
    EXPECT_NEAR(mScene.getCamera().getDistance(), 0.12, 1e-12);
    EXPECT_TRUE(zoom(&mContext, CKVEvent::kWheelTowardsUser));

    placeCamera(2.0e7);
    EXPECT_FALSE(zoom(&mContext, CKVEvent::kWheelTowardsUser));
    EXPECT_TRUE(zoom(&mContext, CKVEvent::kWheelAwayFromUser));
    EXPECT_NEAR(mContext.cameras.back().getDistance(), 1.5e7, 1e-3);
}

} // namespace
} // namespace Kelvor
