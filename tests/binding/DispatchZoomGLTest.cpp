#include "RenderContextFixture.h"

#include "effects/CKVPostProcessNode.h"
#include "scene/CKVSceneNodeImp.h"

#include "TarnwickGeometry/CKVPlane.h"
#include "TarnwickGeometry/CKVRay3D.h"
#include "TarnwickRender/CKVCamera.h"
#include "TarnwickRender/CKVEvent.h"
#include "TarnwickRender/CKVRCApplyCamera.h"
#include "TarnwickRender/CKVRCAttachSceneData.h"
#include "TarnwickRender/CKVRCDetachSceneData.h"
#include "TarnwickRender/CKVRCZoomCamera.h"

#include <osg/Geometry>

namespace Kelvor {
namespace {

constexpr double kFloorHeight = 2.0;

osg::ref_ptr<osg::Geometry> makeFloor()
{
    osg::ref_ptr<osg::Geometry> floor = new osg::Geometry;
    osg::ref_ptr<osg::Vec3Array> vertices = new osg::Vec3Array;
    float const half = 100.0f;
    float const z = static_cast<float>(kFloorHeight);
    vertices->push_back(osg::Vec3(-half, -half, z));
    vertices->push_back(osg::Vec3(half, -half, z));
    vertices->push_back(osg::Vec3(half, half, z));
    vertices->push_back(osg::Vec3(-half, half, z));
    floor->setVertexArray(vertices.get());
    floor->addPrimitiveSet(new osg::DrawArrays(GL_QUADS, 0, 4));
    return floor;
}

// The parameter switches a full-screen effect on, which draws the scene into
// the root's targets and leaves the window's depth empty.
class DispatchZoomGLTest : public RenderContextFixture, public ::testing::WithParamInterface<bool>
{
protected:
    void runBatch(std::initializer_list<CKVRenderCommand*> commands)
    {
        CKVRenderCommandCache* cache = mContext->getRenderCommandCache();
        for (CKVRenderCommand* command : commands)
            cache->write(command);
        cache->finish();
        mContext->onTick(++mTickMs);
    }

    // Where the ray under `pixel` meets the floor, through the scene's camera.
    CKVPoint3D onFloor(CKVPoint3D const& pixel) const
    {
        CKVRay3D ray;
        CKVPoint3D hit;
        EXPECT_TRUE(mScene.getSelectRay(pixel, ray));
        EXPECT_TRUE(ray.hitPlane(CKVPlane(CKVPoint3D(0, 0, kFloorHeight), CKVVector3D(0, 0, 1)), hit));
        return hit;
    }
};

// The depth under the cursor decides the focus: the target moves onto the
// floor, the distance to it shrinks by the zoom factor, and the floor point
// under the cursor stays there. The event's world position, used only over
// empty space, is deliberately wrong.
TEST_P(DispatchZoomGLTest, ZoomFocusesOnTheDepthUnderTheCursor)
{
    ASSERT_NE(start(), nullptr);
    takeOverTicks();
    mContext->getRoot()->setColorGradingEnabled(GetParam());
    mScene.setViewportSize(kWidth, kHeight);
    CKVCamera camera;
    camera.setAspect(double(kWidth) / kHeight);
    camera.setNearFar(0.1, 1000.0);
    camera.setLookAt(CKVPoint3D(0, 0, 10), CKVPoint3D(0, 0, 0), CKVVector3D(0, 1, 0));
    mScene.setCamera(camera);

    kv_shared_ptr<CKVSceneNodeImp> floor(new CKVSceneNodeImp);
    floor->getOSGNode()->addChild(makeFloor());
    kv_shared_ptr<CKVRenderCommand> attach = new CKVRCAttachSceneData(floor.get());
    kv_shared_ptr<CKVRenderCommand> apply = new CKVRCApplyCamera(camera);
    runBatch({attach.get(), apply.get()});
    runBatch({});

    CKVPoint3D const pixel(70.0, 20.0, 0.0);
    CKVPoint3D const focus = onFloor(pixel);
    CKVEvent event(&mScene);
    event.setNDCSize(kWidth, kHeight);
    event.setNDCPos(pixel);
    event.setWorldPos(CKVPoint3D(50.0, 50.0, 50.0));
    event.setMouseWheel(CKVEvent::kWheelAwayFromUser);
    kv_shared_ptr<CKVRCZoomCamera> zoom = new CKVRCZoomCamera(event);
    runBatch({zoom.get()});
    ASSERT_TRUE(zoom->isSignalled());

    CKVCamera after;
    mScene.getSafeCamera(after);
    EXPECT_NEAR(after.getTarget().z, kFloorHeight, 0.01);
    EXPECT_NEAR(after.getDistance(), (10.0 - kFloorHeight) * 0.75, 0.01);
    EXPECT_TRUE(onFloor(pixel).isEqualTo(focus, 0.01));

    kv_shared_ptr<CKVRenderCommand> detach = new CKVRCDetachSceneData(floor.get());
    runBatch({detach.get()});
}

INSTANTIATE_TEST_SUITE_P(WindowOrRootTargets, DispatchZoomGLTest, ::testing::Values(false, true),
                         [](::testing::TestParamInfo<bool> const& info) {
                             return info.param ? "WithPostProcessing" : "StraightToTheWindow";
                         });

} // namespace
} // namespace Kelvor
