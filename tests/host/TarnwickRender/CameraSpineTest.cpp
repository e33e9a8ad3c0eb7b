#include "TarnwickRender/CKVCamera.h"

#include "TarnwickGeometry/CKVRay3D.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace Kelvor;

namespace {

// Clip-space projection followed by the perspective divide.
CKVPoint3D toNDC(CKVCamera const& camera, CKVPoint3D const& world)
{
    CKVMatrix3D const viewProjection = camera.getProjectMatrix() * camera.getViewMatrix();
    return viewProjection.transformPoint(world);
}

void expectNear(CKVPoint3D const& expected, CKVPoint3D const& actual, double tolerance)
{
    EXPECT_NEAR(expected.x, actual.x, tolerance);
    EXPECT_NEAR(expected.y, actual.y, tolerance);
    EXPECT_NEAR(expected.z, actual.z, tolerance);
}

struct LookAtCase
{
    CKVPoint3D position;
    CKVPoint3D target;
    CKVVector3D up;
};

LookAtCase const kCases[] = {
    {{0, 0, 1}, {0, 0, 0}, {0, 1, 0}},
    {{30, -40, 25}, {2, 3, 1}, {0, 0, 1}},
    {{-5, 8, -3}, {10, 10, 10}, {0.3, 0.2, 1}}, // up not perpendicular to the line of sight
    {{5000, 12000, 300}, {5020, 12010, 290}, {0, 0, 1}},
};

} // namespace

TEST(CameraSpineTest, ViewLooksFromPositionToTargetWithUpUpAndRightRight)
{
    for (CKVCamera::ProjectMode mode : {CKVCamera::kPerspective, CKVCamera::kOrthographic}) {
        for (LookAtCase const& c : kCases) {
            CKVCamera camera;
            camera.setProjectMode(mode);
            camera.setNearFar(0.1, 10000.0);
            camera.setLookAt(c.position, c.target, c.up);

            CKVPoint3D const centre = toNDC(camera, c.target);
            EXPECT_NEAR(0.0, centre.x, 1e-9);
            EXPECT_NEAR(0.0, centre.y, 1e-9);
            EXPECT_GT(centre.z, -1.0); // between near and far
            EXPECT_LT(centre.z, 1.0);

            // The eye sits at the view origin, looking down -z.
            expectNear(CKVPoint3D(0, 0, 0), camera.getViewMatrix().transformPoint(c.position), 1e-7);
            EXPECT_LT(camera.getViewMatrix().transformPoint(c.target).z, 0.0);

            CKVVector3D const forward = (c.target - c.position).normal();
            CKVVector3D const right = forward.crossProduct(c.up).normal();
            CKVVector3D const trueUp = right.crossProduct(forward);
            double const step = 0.05 * camera.getDistance();
            CKVPoint3D const above = toNDC(camera, c.target + trueUp * step);
            CKVPoint3D const toTheRight = toNDC(camera, c.target + right * step);
            EXPECT_GT(above.y, 0.0);
            EXPECT_NEAR(0.0, above.x, 1e-9);
            EXPECT_GT(toTheRight.x, 0.0);
            EXPECT_NEAR(0.0, toTheRight.y, 1e-9);
        }
    }
}

TEST(CameraSpineTest, MatricesFollowEverySetter)
{
    CKVCamera camera;
    auto expectMatrices = [&camera]() {
        EXPECT_TRUE(camera.getViewMatrix().isEqualTo(
            CKVMatrix3D::lookAt(camera.getPosition(), camera.getTarget(), camera.getUp()), 1e-12));
        double const h = camera.getOrthoHeight() / 2.0;
        double const w = h * camera.getAspect();
        double const n = camera.getNear();
        double const f = camera.getFar();
        CKVMatrix3D const projection = camera.getProjectMode() == CKVCamera::kPerspective
                                           ? CKVMatrix3D::perspective(camera.getFieldOfView(), camera.getAspect(), n, f)
                                           : CKVMatrix3D::ortho(-w, w, -h, h, n, f);
        EXPECT_TRUE(camera.getProjectMatrix().isEqualTo(projection, 1e-12));
    };
    expectMatrices();
    camera.setPosition(CKVPoint3D(3, 4, 5));
    expectMatrices();
    camera.setTarget(CKVPoint3D(1, -1, 0));
    expectMatrices();
    camera.setUp(CKVVector3D(0, 0, 1));
    expectMatrices();
    camera.setFieldOfView(35.0);
    expectMatrices();
    camera.setAspect(2.0);
    expectMatrices();
    camera.setNearFar(0.5, 500.0);
    expectMatrices();
    camera.setProjectMode(CKVCamera::kOrthographic);
    expectMatrices();
    camera.setOrthoHeight(40.0);
    expectMatrices();
    camera.pan(CKVVector3D(1, 2, 3));
    expectMatrices();
    camera.zoom(0.5);
    expectMatrices();

    CKVCamera copy(camera);
    camera.setPosition(CKVPoint3D(100, 0, 0));
    EXPECT_FALSE(copy.getViewMatrix().isEqualTo(camera.getViewMatrix()));
    copy = camera;
    EXPECT_TRUE(copy.getViewMatrix().isEqualTo(camera.getViewMatrix(), 0.0));
}

TEST(CameraSpineTest, ZoomScalesThePositionAboutTheTarget)
{
    CKVCamera camera;
    camera.setLookAt(CKVPoint3D(10, -20, 30), CKVPoint3D(1, 2, 3), CKVVector3D(0, 0, 1));
    double const distance = camera.getDistance();
    CKVVector3D const direction = (camera.getPosition() - camera.getTarget()).normal();
    CKVPoint3D const offCentre = camera.getTarget() + CKVVector3D(1, 1, 0);
    CKVPoint3D const before = toNDC(camera, offCentre);

    ASSERT_TRUE(camera.zoom(0.5));
    EXPECT_NEAR(distance * 0.5, camera.getDistance(), 1e-9);
    expectNear(CKVPoint3D(1, 2, 3), camera.getTarget(), 0.0);
    EXPECT_TRUE((camera.getPosition() - camera.getTarget()).normal().isEqualTo(direction, 1e-12));
    // Closer in: the same off-centre point moves away from the centre.
    CKVPoint3D const after = toNDC(camera, offCentre);
    EXPECT_GT(std::fabs(after.x), std::fabs(before.x) * 1.5);

    ASSERT_TRUE(camera.zoom(4.0));
    EXPECT_NEAR(distance * 2.0, camera.getDistance(), 1e-9);

    CKVCamera const unchanged(camera);
    for (double bad : {0.0, -1.0, std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()}) {
        EXPECT_FALSE(camera.zoom(bad));
        expectNear(unchanged.getPosition(), camera.getPosition(), 0.0);
    }
}

TEST(CameraSpineTest, OrthographicZoomScalesTheViewHeight)
{
    CKVCamera camera;
    camera.setProjectMode(CKVCamera::kOrthographic);
    camera.setLookAt(CKVPoint3D(0, 0, 50), CKVPoint3D(0, 0, 0), CKVVector3D(0, 1, 0));
    camera.setOrthoHeight(20.0);
    camera.setNearFar(-100.0, 100.0);
    CKVPoint3D const point(2, 3, 0);
    EXPECT_NEAR(0.3, toNDC(camera, point).y, 1e-12);

    ASSERT_TRUE(camera.zoom(0.5));
    EXPECT_NEAR(10.0, camera.getOrthoHeight(), 1e-12);
    EXPECT_NEAR(25.0, camera.getDistance(), 1e-12);
    EXPECT_NEAR(0.6, toNDC(camera, point).y, 1e-12);
}

TEST(CameraSpineTest, PanMovesPositionAndTargetTogether)
{
    CKVCamera camera;
    camera.setLookAt(CKVPoint3D(5, 5, 5), CKVPoint3D(0, 0, 0), CKVVector3D(0, 0, 1));
    CKVMatrix3D const projectionBefore = camera.getProjectMatrix();
    CKVVector3D const offset(3, -2, 7);
    camera.pan(offset);
    expectNear(CKVPoint3D(8, 3, 12), camera.getPosition(), 0.0);
    expectNear(CKVPoint3D(3, -2, 7), camera.getTarget(), 0.0);
    CKVPoint3D const centre = toNDC(camera, CKVPoint3D(3, -2, 7));
    EXPECT_NEAR(0.0, centre.x, 1e-12);
    EXPECT_NEAR(0.0, centre.y, 1e-12);
    EXPECT_TRUE(camera.getProjectMatrix().isEqualTo(projectionBefore, 0.0));
}

TEST(CameraSpineTest, RayAtTheCentreRunsAlongTheLineOfSight)
{
    for (CKVCamera::ProjectMode mode : {CKVCamera::kPerspective, CKVCamera::kOrthographic}) {
        CKVCamera camera;
        camera.setProjectMode(mode);
        camera.setLookAt(CKVPoint3D(4, 5, 6), CKVPoint3D(1, 1, 1), CKVVector3D(0, 0, 1));
        CKVRay3D ray;
        ASSERT_TRUE(camera.getRayAtNDC(0.0, 0.0, ray));
        CKVVector3D const forward = (camera.getTarget() - camera.getPosition()).normal();
        EXPECT_TRUE(ray.direction().isEqualTo(forward, 1e-9));
        EXPECT_NEAR(1.0, ray.direction().length(), 1e-12);
        // Starts on the near plane, in front of the eye.
        EXPECT_NEAR(camera.getNear(), (ray.origin() - camera.getPosition()).dotProduct(forward), 1e-9);
    }
}
