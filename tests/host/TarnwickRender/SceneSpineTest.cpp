#include "TarnwickRender/CKVScene.h"

#include "TarnwickGeometry/CKVRay3D.h"
#include "TarnwickRender/CKVEvent.h"
#include "TarnwickRender/CKVRCZoomCamera.h"

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

using namespace Kelvor;

namespace {

// The pixel (y from the top) at which the camera shows a world point.
CKVPoint3D toPixel(CKVCamera const& camera, CKVPoint3D const& world, int width, int height)
{
    CKVPoint3D const ndc = (camera.getProjectMatrix() * camera.getViewMatrix()).transformPoint(world);
    return CKVPoint3D((ndc.x + 1.0) * 0.5 * width, (1.0 - ndc.y) * 0.5 * height, 0.0);
}

double distanceToLine(CKVRay3D const& ray, CKVPoint3D const& point)
{
    CKVVector3D const d = ray.direction().normal();
    CKVVector3D const v = point - ray.origin();
    return (v - d * v.dotProduct(d)).length();
}

void expectRoundTrip(CKVScene const& scene, int width, int height, std::vector<CKVPoint3D> const& points)
{
    CKVCamera const& camera = scene.getCamera();
    for (CKVPoint3D const& p : points) {
        CKVPoint3D const pixel = toPixel(camera, p, width, height);
        CKVRay3D ray;
        ASSERT_TRUE(scene.getSelectRay(pixel, ray));
        double const scale = 1.0 + p.distanceTo(camera.getPosition());
        EXPECT_LT(distanceToLine(ray, p), 1e-9 * scale) << "point " << p.x << ", " << p.y << ", " << p.z;
        EXPECT_GT((p - ray.origin()).dotProduct(ray.direction()), 0.0); // ahead of the ray, not behind
    }
}

std::vector<CKVPoint3D> const kPoints = {
    {0, 0, 0}, {3, -2, 1}, {-4, 5, 2}, {8, 8, -3}, {-6, -7, 0.5}, {1.5, 0.25, 6},
};

} // namespace

TEST(SceneSpineTest, SelectRayPassesThroughTheProjectedPointInPerspective)
{
    CKVScene scene;
    scene.setViewportSize(800, 600);
    CKVCamera camera;
    camera.setLookAt(CKVPoint3D(20, -30, 15), CKVPoint3D(0, 0, 0), CKVVector3D(0, 0, 1));
    camera.setAspect(800.0 / 600.0);
    camera.setFieldOfView(45.0);
    camera.setNearFar(0.1, 1000.0);
    scene.setCamera(camera);
    expectRoundTrip(scene, 800, 600, kPoints);

    // Far from the world origin, where a careless inverse loses precision.
    camera.setLookAt(CKVPoint3D(52000, 31000, 420), CKVPoint3D(52010, 31020, 400), CKVVector3D(0, 0, 1));
    scene.setCamera(camera);
    std::vector<CKVPoint3D> farPoints;
    for (CKVPoint3D const& p : kPoints)
        farPoints.push_back(CKVPoint3D(52010 + p.x, 31020 + p.y, 400 + p.z));
    expectRoundTrip(scene, 800, 600, farPoints);
}

TEST(SceneSpineTest, SelectRayPassesThroughTheProjectedPointInOrthographic)
{
    CKVScene scene;
    scene.setViewportSize(640, 480);
    CKVCamera camera;
    camera.setProjectMode(CKVCamera::kOrthographic);
    camera.setLookAt(CKVPoint3D(10, 10, 40), CKVPoint3D(0, 0, 0), CKVVector3D(0, 0, 1));
    camera.setAspect(640.0 / 480.0);
    camera.setOrthoHeight(30.0);
    camera.setNearFar(-200.0, 200.0);
    scene.setCamera(camera);
    expectRoundTrip(scene, 640, 480, kPoints);

    // Every orthographic ray runs along the line of sight.
    CKVVector3D const forward = (camera.getTarget() - camera.getPosition()).normal();
    CKVRay3D corner;
    CKVRay3D middle;
    ASSERT_TRUE(scene.getSelectRay(CKVPoint3D(0, 0, 0), corner));
    ASSERT_TRUE(scene.getSelectRay(CKVPoint3D(320, 240, 0), middle));
    EXPECT_TRUE(corner.direction().isEqualTo(forward, 1e-9));
    EXPECT_TRUE(middle.direction().isEqualTo(forward, 1e-9));
    EXPECT_LT(distanceToLine(middle, camera.getTarget()), 1e-9);
}

TEST(SceneSpineTest, PixelRowsCountFromTheTop)
{
    CKVScene scene;
    scene.setViewportSize(400, 400);
    CKVCamera camera;
    camera.setAspect(1.0);
    camera.setLookAt(CKVPoint3D(0, 0, 10), CKVPoint3D(0, 0, 0), CKVVector3D(0, 1, 0));
    scene.setCamera(camera);

    CKVPlane const ground(CKVPoint3D(0, 0, 0), CKVVector3D(0, 0, 1));
    CKVRay3D topLeft;
    ASSERT_TRUE(scene.getSelectRay(CKVPoint3D(0, 0, 0), topLeft));
    CKVPoint3D hit;
    ASSERT_TRUE(topLeft.hitPlane(ground, hit));
    EXPECT_LT(hit.x, 0.0);
    EXPECT_GT(hit.y, 0.0); // the top row of the window looks at +y, the camera's up
}

TEST(SceneSpineTest, SelectRayNeedsAViewport)
{
    CKVScene scene;
    CKVRay3D ray;
    EXPECT_FALSE(scene.getSelectRay(CKVPoint3D(1, 1, 0), ray));
    scene.setViewportSize(100, 0);
    EXPECT_FALSE(scene.getSelectRay(CKVPoint3D(1, 1, 0), ray));
}

TEST(SceneSpineTest, ZoomRecordMovesTheSceneCameraThatTheSelectRayUses)
{
    CKVScene scene;
    scene.setViewportSize(200, 100);
    CKVCamera camera;
    camera.setAspect(2.0);
    camera.setLookAt(CKVPoint3D(0, 0, 10), CKVPoint3D(0, 0, 0), CKVVector3D(0, 1, 0));
    scene.setCamera(camera);
    CKVEvent event(&scene);
    kv_shared_ptr<CKVRCZoomCamera> zoom(new CKVRCZoomCamera(event));
    ASSERT_NE(nullptr, zoom->getSceneCamera());

    CKVCamera moved(*zoom->getSceneCamera());
    moved.pan(CKVVector3D(5, 0, 0));
    zoom->applySceneCamera(moved);
    EXPECT_DOUBLE_EQ(5.0, zoom->getSceneCamera()->getTarget().x);
    CKVRay3D ray;
    ASSERT_TRUE(scene.getSelectRay(CKVPoint3D(100, 50, 0), ray));
    EXPECT_NEAR(5.0, ray.origin().x, 1e-9);

    CKVRCZoomCamera withoutScene{CKVEvent()};
    EXPECT_EQ(nullptr, withoutScene.getSceneCamera());
}

namespace {

class RecordingOperator : public CKVOperator
{
public:
    void onLButtonDown(CKVEvent const&) override { mCalls += "LDown "; }
    void onLButtonUp(CKVEvent const&) override { mCalls += "LUp "; }
    void onLButtonDblClk(CKVEvent const&) override { mCalls += "LDbl "; }
    void onMButtonDown(CKVEvent const&) override { mCalls += "MDown "; }
    void onMButtonUp(CKVEvent const&) override { mCalls += "MUp "; }
    void onMButtonDblClk(CKVEvent const&) override { mCalls += "MDbl "; }
    void onRButtonDown(CKVEvent const&) override { mCalls += "RDown "; }
    void onRButtonUp(CKVEvent const&) override { mCalls += "RUp "; }
    void onRButtonDblClk(CKVEvent const&) override { mCalls += "RDbl "; }
    void onMouseMove(CKVEvent const& e) override
    {
        mCalls += "Move ";
        mLastButtons = e.getMouseButtons();
    }
    void onMouseWheel(CKVEvent const& e) override
    {
        mCalls += "Wheel ";
        mLastWheel = e.getMouseWheel();
    }
    void onKeyDown(CKVEvent const& e) override
    {
        mCalls += "KDown ";
        mLastKeys = e.getSysKeys();
    }
    void onKeyUp(CKVEvent const&) override { mCalls += "KUp "; }

    std::string mCalls;
    int mLastButtons = 0;
    int mLastWheel = 0;
    unsigned int mLastKeys = 0;
};

} // namespace

TEST(SceneSpineTest, EachEntryPointReachesTheMatchingOperatorHandler)
{
    CKVScene scene;
    CKVEvent event(&scene);
    scene.onLButtonDown(event); // no operator: nothing happens

    kv_shared_ptr<RecordingOperator> op(new RecordingOperator);
    scene.setOperator(op.get());
    event.addMouseButton(CKVEvent::kLeftButton);
    event.addMouseButton(CKVEvent::kMiddleButton);
    event.addSysKey(CKVEvent::kControl);
    event.addSysKey(CKVEvent::kShift);
    event.setMouseWheel(CKVEvent::kWheelAwayFromUser);

    scene.onLButtonDown(event);
    scene.onLButtonUp(event);
    scene.onLButtonDblClk(event);
    scene.onMButtonDown(event);
    scene.onMButtonUp(event);
    scene.onMButtonDblClk(event);
    scene.onRButtonDown(event);
    scene.onRButtonUp(event);
    scene.onRButtonDblClk(event);
    scene.onMouseMove(event);
    scene.onMouseWheel(event);
    scene.onKeyDown(event);
    scene.onKeyUp(event);
    EXPECT_EQ("LDown LUp LDbl MDown MUp MDbl RDown RUp RDbl Move Wheel KDown KUp ", op->mCalls);
    EXPECT_EQ(5, op->mLastButtons);
    EXPECT_EQ(2, op->mLastWheel);
    EXPECT_EQ(24u, op->mLastKeys);
}

namespace {

// Removes itself from the scene in the middle of handling an event, as a tool
// that ends itself on a click does. Reports through the test's variables,
// since the object is gone once the call returns.
class SelfRemovingOperator : public CKVOperator
{
public:
    SelfRemovingOperator(CKVScene* scene, std::atomic<int>* destroyed, bool* sawEmptyScene, bool* aliveAfterRemoval)
        : mScene(scene), mDestroyed(destroyed), mSawEmptyScene(sawEmptyScene), mAliveAfterRemoval(aliveAfterRemoval)
    {
    }
    ~SelfRemovingOperator() override { ++*mDestroyed; }
    void onLButtonDown(CKVEvent const&) override
    {
        mScene->setOperator(nullptr); // would deadlock if the scene held its lock here
        kv_shared_ptr<CKVOperator> current;
        *mSawEmptyScene = !mScene->getSafeOperator(current);
        *mAliveAfterRemoval = mDestroyed->load() == 0;
    }

private:
    CKVScene* mScene;
    std::atomic<int>* mDestroyed;
    bool* mSawEmptyScene;
    bool* mAliveAfterRemoval;
};

} // namespace

TEST(SceneSpineTest, OperatorMayRemoveItselfWhileHandlingAnEvent)
{
    std::atomic<int> destroyed{0};
    bool sawEmptyScene = false;
    bool aliveAfterRemoval = false;
    CKVScene scene;
    // The scene holds the only reference.
    scene.setOperator(new SelfRemovingOperator(&scene, &destroyed, &sawEmptyScene, &aliveAfterRemoval));
    scene.onLButtonDown(CKVEvent(&scene));
    EXPECT_TRUE(sawEmptyScene);
    EXPECT_TRUE(aliveAfterRemoval);
    EXPECT_EQ(1, destroyed.load());
}

TEST(SceneSpineTest, OperatorAndModelSwapSafelyAgainstReaders)
{
    CKVScene scene;
    std::atomic<bool> stop{false};
    std::thread swapper([&] {
        for (int i = 0; i < 2000; ++i) {
            scene.setOperator(new RecordingOperator);
            scene.setGraphicsModel(i % 3 ? new CKVGraphicsModel : nullptr);
            CKVCamera camera;
            camera.setPosition(CKVPoint3D(i, 0, 10));
            scene.setCamera(camera);
        }
        stop = true;
    });
    CKVEvent event(&scene);
    while (!stop) {
        kv_shared_ptr<CKVOperator> op;
        if (scene.getSafeOperator(op))
            op->tick(1);
        kv_shared_ptr<CKVGraphicsModel> model;
        if (scene.getSafeGraphicsModel(model)) {
            EXPECT_NE(nullptr, model->getRenderCommandCache());
        }
        CKVCamera copy;
        scene.getSafeCamera(copy);
        scene.onMouseMove(event);
    }
    swapper.join();
    kv_shared_ptr<CKVOperator> last;
    EXPECT_TRUE(scene.getSafeOperator(last));
}
