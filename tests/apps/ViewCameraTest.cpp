#include "apps/view/ViewCameraFraming.h"
#include "apps/view/ViewCommandSink.h"
#include "apps/view/ViewOrbitOperator.h"

#include "TarnwickRender/CKVEvent.h"
#include "TarnwickRender/CKVScene.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

using namespace Kelvor;

namespace {

// Where a world point lands in normalised device coordinates.
CKVPoint3D toNdc(CKVCamera const& camera, CKVPoint3D const& point)
{
    return (camera.getProjectMatrix() * camera.getViewMatrix()).transformPoint(point);
}

class RecordingSink : public ViewCommandSink
{
public:
    void applyCamera(CKVCamera const& camera) override { cameras.push_back(camera); }
    void zoom(CKVEvent const& event) override { zooms.push_back(event); }
    void pick(CKVPoint3D const& pixel) override { picks.push_back(pixel); }
    void keyDown(CKVEvent const& event) override { keys.push_back(event); }

    std::vector<CKVCamera> cameras;
    std::vector<CKVEvent> zooms;
    std::vector<CKVPoint3D> picks;
    std::vector<CKVEvent> keys;
};

CKVEvent mouse(CKVScene& scene, double x, double y, int buttons)
{
    CKVEvent event(&scene);
    event.setNDCSize(400, 300);
    event.setNDCPos(CKVPoint3D(x, y, 0.0));
    event.addMouseButton(buttons);
    return event;
}

} // namespace

TEST(ViewCameraFramingTest, EveryNamedViewShowsTheWholeBoxAtAnyAspect)
{
    CKVBndBox const box(CKVPoint3D(-3.0, 10.0, 0.0), CKVPoint3D(40.0, 19.0, 7.5));
    for (char const* view : {"iso", "front", "back", "left", "right", "top"}) {
        for (double aspect : {4.0 / 3.0, 0.5, 2.5}) {
            CKVCamera camera;
            ASSERT_TRUE(ViewCameraFraming::frame(box, view, aspect, camera)) << view;
            EXPECT_NEAR(camera.getTarget().distanceTo(box.midPt()), 0.0, 1e-9);
            for (unsigned int c = 0; c < 8; ++c) {
                CKVPoint3D const p = toNdc(camera, box.corner(c));
                EXPECT_LE(std::fabs(p.x), 1.0) << view << " aspect " << aspect << " corner " << c;
                EXPECT_LE(std::fabs(p.y), 1.0) << view << " aspect " << aspect << " corner " << c;
                EXPECT_GT(p.z, -1.0) << "corner " << c << " in front of the near plane";
                EXPECT_LT(p.z, 1.0) << "corner " << c << " before the far plane";
            }
        }
    }
    // Seen from above, north is up on screen.
    CKVCamera top;
    ASSERT_TRUE(ViewCameraFraming::frame(box, "top", 1.0, top));
    CKVPoint3D const north = toNdc(top, box.midPt() + CKVVector3D(0.0, 1.0, 0.0));
    EXPECT_GT(north.y, 0.0);
    EXPECT_NEAR(north.x, 0.0, 1e-9);

    CKVCamera untouched;
    EXPECT_FALSE(ViewCameraFraming::frame(CKVBndBox(), "iso", 1.0, untouched));
    EXPECT_FALSE(ViewCameraFraming::frame(box, "sideways", 1.0, untouched));
    EXPECT_FALSE(ViewCameraFraming::frame(box, "iso", 0.0, untouched));
}

TEST(ViewOrbitOperatorTest, OrbitKeepsTargetAndDistanceAndNeverPassesThePole)
{
    CKVCamera camera;
    camera.setLookAt(CKVPoint3D(5.0, -10.0, 3.0), CKVPoint3D(5.0, 0.0, 3.0), CKVVector3D(0.0, 0.0, 1.0));
    ViewOrbitOperator::orbit(camera, 0.5 * 3.14159265358979, 0.0);
    // A quarter turn about z from the south side lands on the east side.
    EXPECT_NEAR(camera.getPosition().x, 15.0, 1e-9);
    EXPECT_NEAR(camera.getPosition().y, 0.0, 1e-9);
    EXPECT_NEAR(camera.getDistance(), 10.0, 1e-9);

    // Far past the pole in both directions: it stops just short, upright.
    for (double pitch : {-50.0, 50.0}) {
        CKVCamera turned = camera;
        ViewOrbitOperator::orbit(turned, 0.0, pitch);
        CKVVector3D const offset = turned.getPosition() - turned.getTarget();
        EXPECT_NEAR(offset.length(), 10.0, 1e-9);
        EXPECT_LT(std::fabs(offset.z), 10.0 * std::cos(0.01)) << pitch;
        EXPECT_GT(std::fabs(offset.z), 9.9) << pitch;
        EXPECT_GT(turned.getUp().z, 0.99);
        // A second push the same way changes nothing.
        CKVCamera again = turned;
        ViewOrbitOperator::orbit(again, 0.0, pitch);
        EXPECT_NEAR(again.getPosition().distanceTo(turned.getPosition()), 0.0, 1e-9);
    }
}

TEST(ViewOrbitOperatorTest, PanMakesTheTargetPlaneFollowTheCursor)
{
    CKVCamera camera;
    camera.setFieldOfView(60.0);
    camera.setAspect(1.0);
    camera.setLookAt(CKVPoint3D(0.0, -10.0, 0.0), CKVPoint3D(0.0, 0.0, 0.0), CKVVector3D(0.0, 0.0, 1.0));
    CKVPoint3D const marker(0.0, 0.0, 0.0);
    CKVPoint3D const before = toNdc(camera, marker);
    // 100 pixels right and 50 down on a 400-pixel-high view.
    ViewOrbitOperator::pan(camera, 100.0, 50.0, 400);
    CKVPoint3D const after = toNdc(camera, marker);
    EXPECT_NEAR(after.x - before.x, 2.0 * 100.0 / 400.0, 1e-9);
    EXPECT_NEAR(after.y - before.y, -2.0 * 50.0 / 400.0, 1e-9);
    EXPECT_NEAR(camera.getDistance(), 10.0, 1e-9) << "panning does not zoom";
}

TEST(ViewOrbitOperatorTest, ClickPicksDragMovesTheCameraWheelZoomsKeysPassOn)
{
    CKVScene scene;
    CKVCamera start;
    start.setLookAt(CKVPoint3D(0.0, -10.0, 2.0), CKVPoint3D(0.0, 0.0, 2.0), CKVVector3D(0.0, 0.0, 1.0));
    scene.setCamera(start);
    RecordingSink sink;
    kv_shared_ptr<ViewOrbitOperator> tool(new ViewOrbitOperator(scene, sink));
    scene.setOperator(tool.get());

    // A click with a jitter below the slop picks where the button went up.
    scene.onLButtonDown(mouse(scene, 100, 80, CKVEvent::kLeftButton));
    scene.onMouseMove(mouse(scene, 102, 81, CKVEvent::kLeftButton));
    scene.onLButtonUp(mouse(scene, 102, 81, 0));
    ASSERT_EQ(sink.picks.size(), 1u);
    EXPECT_DOUBLE_EQ(sink.picks[0].x, 102.0);
    EXPECT_TRUE(sink.cameras.empty());

    // A drag orbits: the scene's camera moves and is sent; no pick.
    scene.onLButtonDown(mouse(scene, 100, 80, CKVEvent::kLeftButton));
    scene.onMouseMove(mouse(scene, 160, 80, CKVEvent::kLeftButton));
    scene.onLButtonUp(mouse(scene, 160, 80, 0));
    EXPECT_EQ(sink.picks.size(), 1u);
    ASSERT_FALSE(sink.cameras.empty());
    EXPECT_GT(scene.getCamera().getPosition().distanceTo(start.getPosition()), 0.1);
    EXPECT_NEAR(sink.cameras.back().getPosition().distanceTo(scene.getCamera().getPosition()), 0.0, 1e-12);

    // Right drag pans: the target moves along with the eye.
    CKVPoint3D const targetBefore = scene.getCamera().getTarget();
    scene.onRButtonDown(mouse(scene, 100, 80, CKVEvent::kRightButton));
    scene.onMouseMove(mouse(scene, 100, 140, CKVEvent::kRightButton));
    scene.onRButtonUp(mouse(scene, 100, 140, 0));
    EXPECT_GT(scene.getCamera().getTarget().distanceTo(targetBefore), 0.1);
    EXPECT_EQ(sink.picks.size(), 1u) << "a right click never picks";

    // Moving without a button does nothing.
    std::size_t const sent = sink.cameras.size();
    scene.onMouseMove(mouse(scene, 300, 200, 0));
    EXPECT_EQ(sink.cameras.size(), sent);

    CKVEvent wheel = mouse(scene, 10, 20, 0);
    scene.onMouseWheel(wheel);
    EXPECT_TRUE(sink.zooms.empty()) << "a wheel event without motion";
    wheel.setMouseWheel(CKVEvent::kWheelAwayFromUser);
    scene.onMouseWheel(wheel);
    ASSERT_EQ(sink.zooms.size(), 1u);
    EXPECT_DOUBLE_EQ(sink.zooms[0].getNDCPos().y, 20.0);

    CKVEvent key(&scene);
    key.setAnsiKey(static_cast<CKVEvent::AnsiKey>('s'));
    scene.onKeyDown(key);
    ASSERT_EQ(sink.keys.size(), 1u);
    EXPECT_EQ(sink.keys[0].getAnsiKey(), 's');
    scene.setOperator(nullptr);
}
