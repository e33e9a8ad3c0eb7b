// The cascade arithmetic against a reference written straight from the
// formulas: split distances, the window depth of each split, and light
// frusta built from the slice corners and a Rodrigues rotation rather than
// from the inverse view-projection and a quaternion.
#include "effects/CKVShadowCascades.h"

#include <gtest/gtest.h>

#include <osg/Matrixd>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

namespace Kelvor {
namespace {

constexpr unsigned int kCount = CKVShadowCascades::kCascadeCount;

// --- reference ---------------------------------------------------------

double referenceSplit(double n, double f, unsigned int i)
{
    double const uniform = n + (f - n) * i / kCount;
    double const logarithmic = n * std::pow(f / n, double(i) / kCount);
    return (uniform + logarithmic) / 2.0;
}

// OpenGL's perspective depth mapping, written out.
double referenceWindowDepth(double n, double f, double d)
{
    double const ndc = (f + n) / (f - n) - 2.0 * f * n / ((f - n) * d);
    return ndc * 0.5 + 0.5;
}

osg::Vec3d rotate(osg::Vec3d const& v, osg::Vec3d const& from, osg::Vec3d const& to)
{
    osg::Vec3d axis = from ^ to;
    double const sine = axis.length();
    double const cosine = from * to;
    axis.normalize();
    return v * cosine + (axis ^ v) * sine + axis * ((axis * v) * (1.0 - cosine));
}

struct ReferenceFrustum
{
    osg::Matrixd view;
    osg::Matrixd projection;
};

// Corners of the camera slice [n, f] from the field of view directly.
ReferenceFrustum referenceFit(double fovy, double aspect, double n, double f, osg::Vec3d const& eye,
                              osg::Vec3d const& centre, osg::Vec3d const& up, osg::Vec3d const& light)
{
    osg::Vec3d const forward = osg::Vec3d(centre - eye) / (centre - eye).length();
    osg::Vec3d side = forward ^ up;
    side.normalize();
    osg::Vec3d const trueUp = side ^ forward;
    std::vector<osg::Vec3d> corners;
    double const tangent = std::tan(osg::DegreesToRadians(fovy) / 2.0);
    for (double d : {n, f})
        for (double sx : {-1.0, 1.0})
            for (double sy : {-1.0, 1.0})
                corners.push_back(eye + forward * d + trueUp * (sy * d * tangent) + side * (sx * d * tangent * aspect));
    osg::Vec3d mid;
    for (osg::Vec3d const& c : corners)
        mid += c / double(corners.size());

    osg::Vec3d const lightSide = rotate(side, forward, light);
    osg::Vec3d const lightUp = rotate(trueUp, forward, light);
    double r = 0.0;
    for (osg::Vec3d const& c : corners)
        r = std::max(r, std::abs((c - mid) * light));
    osg::Vec3d const lightEye = mid - light * r;
    double lo = 1e300, hi = -1e300, left = 1e300, right = -1e300, bottom = 1e300, top = -1e300;
    for (osg::Vec3d const& c : corners)
    {
        lo = std::min(lo, (c - lightEye) * light);
        hi = std::max(hi, (c - lightEye) * light);
        left = std::min(left, (c - mid) * lightSide);
        right = std::max(right, (c - mid) * lightSide);
        bottom = std::min(bottom, (c - mid) * lightUp);
        top = std::max(top, (c - mid) * lightUp);
    }
    ReferenceFrustum frustum;
    frustum.view = osg::Matrixd::lookAt(lightEye, lightEye + light, lightUp);
    frustum.projection = osg::Matrixd::ortho(left, right, bottom, top, std::max(lo, 0.0), hi);
    return frustum;
}

void expectNear(osg::Matrixd const& actual, osg::Matrixd const& expected, double tolerance, char const* what)
{
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c)
            EXPECT_NEAR(actual(r, c), expected(r, c), tolerance) << what << " (" << r << "," << c << ")";
}

// --- tests ---------------------------------------------------------------

TEST(ShadowCascades, SplitsFollowThePracticalSchemeAndDeepRangesAreCut)
{
    struct Case
    {
        double n, f, expectedFar;
    };
    double const inf = std::numeric_limits<double>::infinity();
    Case const cases[] = {
        {1.0, 100.0, 100.0},
        {0.5, 300.0, 300.0},
        {2.0, 5.0e6, 2.0 + 2.0e6},  // deeper than the limit
        {2.0, inf, 2.0 + 2.0e6},    // an infinite far plane
    };
    for (Case const& c : cases)
    {
        double f = c.f;
        CKVShadowCascades::limitRange(c.n, f);
        EXPECT_DOUBLE_EQ(f, c.expectedFar);
        float ends[kCount + 1];
        CKVShadowCascades::splitDistances(c.n, f, ends);
        EXPECT_FLOAT_EQ(ends[0], float(c.n));
        EXPECT_FLOAT_EQ(ends[kCount], float(f));
        for (unsigned int i = 1; i < kCount; ++i)
        {
            EXPECT_NEAR(ends[i], referenceSplit(c.n, f, i), 1e-5 * f) << c.n << ".." << c.f << " split " << i;
            EXPECT_GT(ends[i], ends[i - 1]);
        }
    }
}

TEST(ShadowCascades, SceneBoundsNarrowTheCameraRange)
{
    // Looking down -y from y = 20 at a box spanning y in [-3, 5].
    osg::Matrixd const view = osg::Matrixd::lookAt(osg::Vec3d(0, 20, 2), osg::Vec3d(0, 0, 2), osg::Vec3d(0, 0, 1));
    osg::BoundingBox const box(-4, -3, 0, 4, 5, 6);
    double n = 0.1;
    double f = 1000.0;
    CKVShadowCascades::clampToBox(box, view, osg::Vec3d(0, -1, 0), n, f);
    EXPECT_NEAR(n, 15.0, 1e-9);
    EXPECT_NEAR(f, 23.0, 1e-9);
    // A camera range inside the box is kept.
    n = 17.0;
    f = 18.0;
    CKVShadowCascades::clampToBox(box, view, osg::Vec3d(0, -1, 0), n, f);
    EXPECT_DOUBLE_EQ(n, 17.0);
    EXPECT_DOUBLE_EQ(f, 18.0);
}

TEST(ShadowCascades, LightFrustaAndWindowDepthsMatchTheReference)
{
    double const fovy = 50.0;
    double const aspect = 4.0 / 3.0;
    double const n = 0.5;
    double const f = 80.0;
    osg::Matrixd const projection = osg::Matrixd::perspective(fovy, aspect, n, f);
    struct Case
    {
        osg::Vec3d eye, centre, up, light;
    };
    Case const cases[] = {
        {{7, -11, 7}, {0, 0, 0.5}, {0, 0, 1}, {-0.5, 0.3, -0.8}},
        {{-3, 4, 30}, {2, 1, 0}, {0, 1, 0}, {0.2, 0.1, -1.0}},
    };
    for (Case const& c : cases)
    {
        osg::Vec3d light = c.light;
        light.normalize();
        osg::Matrixd const view = osg::Matrixd::lookAt(c.eye, c.centre, c.up);
        CKVShadowCascades cascades;
        cascades.setLightDirection(light);
        ASSERT_TRUE(cascades.update(projection, view, osg::BoundingBox(), osg::Vec3d()));

        ReferenceFrustum const whole = referenceFit(fovy, aspect, n, f, c.eye, c.centre, c.up, light);
        expectNear(cascades.getWholeRange().view * cascades.getWholeRange().projection,
                   whole.view * whole.projection, 1e-6, "whole range");
        for (unsigned int i = 0; i < kCount; ++i)
        {
            // The ends are kept in single precision, as the shaders get them.
            double const lo = float(i == 0 ? n : referenceSplit(n, f, i));
            double const hi = float(i + 1 == kCount ? f : referenceSplit(n, f, i + 1));
            ReferenceFrustum const expected = referenceFit(fovy, aspect, lo, hi, c.eye, c.centre, c.up, light);
            expectNear(cascades.getCascade(i).view, expected.view, 1e-6, "view");
            expectNear(cascades.getCascade(i).projection, expected.projection, 1e-4, "projection");
            EXPECT_NEAR(cascades.getClipSpaceEnd(i), referenceWindowDepth(n, f, hi), 1e-6);
        }
    }
    // An orthographic camera has no cascades.
    CKVShadowCascades cascades;
    EXPECT_FALSE(cascades.update(osg::Matrixd::ortho(-1, 1, -1, 1, 1, 10), osg::Matrixd(), osg::BoundingBox(),
                                 osg::Vec3d()));
}

} // namespace
} // namespace Kelvor
