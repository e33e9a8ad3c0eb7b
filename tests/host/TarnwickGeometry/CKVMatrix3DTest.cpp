#include "TarnwickGeometry/CKVMatrix3D.h"
#include "TarnwickGeometry/KVMatrixConvert.h"

#include <gtest/gtest.h>

#include <osg/Matrixd>
#include <osg/Vec3d>

namespace Kelvor {
namespace {

// Elements chosen to be exact in single precision, so conversions can be
// compared exactly.
CKVMatrix3D distinctMatrix()
{
    CKVMatrix3D m;
    for (int r = 0; r < 4; ++r) {
        for (int c = 0; c < 4; ++c)
            m(r, c) = r * 4 + c + 0.5;
    }
    return m;
}

void expectNear(CKVMatrix3D const& expected, CKVMatrix3D const& actual, double tolerance)
{
    for (int r = 0; r < 4; ++r) {
        for (int c = 0; c < 4; ++c)
            EXPECT_NEAR(expected(r, c), actual(r, c), tolerance) << "at (" << r << ", " << c << ")";
    }
}

void expectNear(CKVPoint3D const& expected, CKVPoint3D const& actual, double tolerance)
{
    EXPECT_NEAR(expected.x, actual.x, tolerance);
    EXPECT_NEAR(expected.y, actual.y, tolerance);
    EXPECT_NEAR(expected.z, actual.z, tolerance);
}

TEST(CKVMatrix3D, DefaultIsIdentityAndTranslationLivesInColumnThree)
{
    EXPECT_TRUE(CKVMatrix3D().isIdentity());

    CKVMatrix3D m = CKVMatrix3D::translation(CKVVector3D(4.0, -5.0, 6.0));
    EXPECT_EQ(0.0, m(3, 0));
    EXPECT_EQ(4.0, m(0, 3));
    EXPECT_EQ(-5.0, m(1, 3));
    EXPECT_EQ(6.0, m(2, 3));
    EXPECT_EQ(CKVPoint3D(5.0, -4.0, 7.0), m.transformPoint(CKVPoint3D(1.0, 1.0, 1.0)));
    EXPECT_EQ(CKVVector3D(1.0, 1.0, 1.0), m.transformVector(CKVVector3D(1.0, 1.0, 1.0)));
    EXPECT_EQ(CKVVector3D(4.0, -5.0, 6.0), m.getTranslation());
}

TEST(CKVMatrix3D, ProductAppliesTheRightFactorFirst)
{
    CKVMatrix3D const move = CKVMatrix3D::translation(CKVVector3D(10.0, 0.0, 0.0));
    CKVMatrix3D const scale = CKVMatrix3D::scaling(2.0, 2.0, 2.0);
    CKVPoint3D const p(1.0, 1.0, 1.0);
    EXPECT_EQ(CKVPoint3D(12.0, 2.0, 2.0), (move * scale).transformPoint(p));
    EXPECT_EQ(CKVPoint3D(22.0, 2.0, 2.0), (scale * move).transformPoint(p));

    CKVMatrix3D m = scale;
    m.preMultBy(move);
    EXPECT_TRUE(m.isEqualTo(move * scale, 0.0));
    m = scale;
    m.postMultBy(move);
    EXPECT_TRUE(m.isEqualTo(scale * move, 0.0));
}

TEST(CKVMatrix3D, RotationIsRightHanded)
{
    CKVMatrix3D const r = CKVMatrix3D::rotation(Math::kPi / 2.0, CKVVector3D::kZAxis);
    EXPECT_TRUE(r.transformVector(CKVVector3D::kXAxis).isEqualTo(CKVVector3D::kYAxis, 1e-15));
    EXPECT_TRUE(CKVMatrix3D::rotation(1.0, CKVVector3D()).isIdentity());
}

TEST(KVMatrixConvert, OsgMatrixIsTheTranspose)
{
    CKVMatrix3D const m = distinctMatrix();
    osg::Matrixd const o = toOsgMatrix(m);
    for (int r = 0; r < 4; ++r) {
        for (int c = 0; c < 4; ++c)
            EXPECT_EQ(m(c, r), o(r, c));
    }

    // The translation reaches OpenSceneGraph's last row.
    osg::Matrixd const t = toOsgMatrix(CKVMatrix3D::translation(CKVVector3D(4.0, -5.0, 6.0)));
    EXPECT_EQ(osg::Vec3d(4.0, -5.0, 6.0), t.getTrans());
    EXPECT_EQ(4.0, t(3, 0));
    EXPECT_EQ(0.0, t(0, 3));
}

TEST(KVMatrixConvert, BothConventionsMoveAPointAlike)
{
    CKVMatrix3D const m = CKVMatrix3D::translation(CKVVector3D(1.0, 2.0, 3.0)) *
                          CKVMatrix3D::rotation(0.75, CKVVector3D(1.0, 2.0, 2.0)) *
                          CKVMatrix3D::scaling(2.0, 3.0, 0.5);
    CKVPoint3D const ours = m.transformPoint(CKVPoint3D(0.25, -1.5, 4.0));
    osg::Vec3d const theirs = osg::Vec3d(0.25, -1.5, 4.0) * toOsgMatrix(m);
    expectNear(ours, CKVPoint3D(theirs.x(), theirs.y(), theirs.z()), 1e-5);

    // Row vectors reverse the order of a product.
    CKVMatrix3D const a = CKVMatrix3D::rotation(0.3, CKVVector3D::kXAxis);
    CKVMatrix3D const b = CKVMatrix3D::translation(CKVVector3D(0.0, 5.0, 0.0));
    expectNear(fromOsgMatrix(toOsgMatrix(b) * toOsgMatrix(a)), a * b, 1e-6);
}

TEST(KVMatrixConvert, RoundTrips)
{
    CKVMatrix3D const exact = distinctMatrix();
    EXPECT_TRUE(fromOsgMatrix(toOsgMatrix(exact)).isEqualTo(exact, 0.0));

    osg::Matrixd o;
    o.makeLookAt(osg::Vec3d(1.1, 2.2, 3.3), osg::Vec3d(0.0, 0.0, 0.0), osg::Vec3d(0.0, 0.0, 1.0));
    // Back from OpenSceneGraph keeps every bit; towards it goes through float.
    osg::Matrixd const again = toOsgMatrix(fromOsgMatrix(o));
    for (int r = 0; r < 4; ++r) {
        for (int c = 0; c < 4; ++c) {
            EXPECT_EQ(o(r, c), fromOsgMatrix(o)(c, r));
            EXPECT_EQ(static_cast<double>(static_cast<float>(o(r, c))), again(r, c));
        }
    }
}

TEST(CKVMatrix3D, InverseUndoesAffineAndProjectiveMatrices)
{
    CKVMatrix3D const affine = CKVMatrix3D::translation(CKVVector3D(3.0, -7.0, 2.0)) *
                               CKVMatrix3D::rotation(1.2, CKVVector3D(0.3, -1.0, 0.5)) *
                               CKVMatrix3D::scaling(2.0, 0.5, 4.0);
    CKVMatrix3D inv;
    ASSERT_TRUE(affine.inverse(inv));
    EXPECT_TRUE((affine * inv).isIdentity(1e-12));
    EXPECT_TRUE((inv * affine).isIdentity(1e-12));
    EXPECT_NEAR(4.0, affine.det(), 1e-12);

    CKVMatrix3D const projection = CKVMatrix3D::perspective(45.0, 1.5, 0.5, 500.0);
    CKVMatrix3D projInv = projection;
    ASSERT_TRUE(projInv.invert());
    CKVPoint3D const viewPoint(1.0, -2.0, -30.0);
    expectNear(viewPoint, projInv.transformPoint(projection.transformPoint(viewPoint)), 1e-9);

    // Both against OpenSceneGraph's own inverse.
    osg::Matrixd osgInv;
    osgInv.invert(toOsgMatrix(affine));
    expectNear(fromOsgMatrix(osgInv), inv, 1e-6);
}

TEST(CKVMatrix3D, SingularMatrixDoesNotInvert)
{
    CKVMatrix3D const flat = CKVMatrix3D::scaling(1.0, 1.0, 0.0);
    CKVMatrix3D out = CKVMatrix3D::translation(CKVVector3D(1.0, 2.0, 3.0));
    CKVMatrix3D const before = out;
    EXPECT_FALSE(flat.inverse(out));
    EXPECT_TRUE(out.isEqualTo(before, 0.0));
    CKVMatrix3D m = flat;
    EXPECT_FALSE(m.invert());
    EXPECT_TRUE(m.isEqualTo(flat, 0.0));
    EXPECT_FALSE(CKVMatrix3D::scaling(1e-5, 1e-5, 1e-5).inverse(out, 1e-12)) << "below the caller's tolerance";
}

TEST(CKVMatrix3D, CoordSystemPutsAxesInColumns)
{
    CKVVector3D const x(0.0, 1.0, 0.0), y(-1.0, 0.0, 0.0), z(0.0, 0.0, 1.0);
    CKVPoint3D const origin(10.0, 20.0, 30.0);
    CKVMatrix3D m = distinctMatrix();
    CKVMatrix3D& self = m.setCoordSystem(x, y, z, origin);
    EXPECT_EQ(&m, &self);
    EXPECT_EQ(CKVPoint3D(10.0, 21.0, 30.0), m.transformPoint(CKVPoint3D(1.0, 0.0, 0.0)));
    EXPECT_EQ(CKVPoint3D(9.0, 20.0, 30.0), m.transformPoint(CKVPoint3D(0.0, 1.0, 0.0)));
    EXPECT_EQ(0.0, m(3, 0));
    EXPECT_EQ(1.0, m(3, 3));

    CKVVector3D gx, gy, gz;
    CKVPoint3D go;
    m.getCoordSystem(gx, gy, gz, go);
    EXPECT_EQ(x, gx);
    EXPECT_EQ(y, gy);
    EXPECT_EQ(z, gz);
    EXPECT_EQ(origin, go);
}

// The camera builders must agree with the conventions OpenSceneGraph uses,
// since their results are handed to it.
TEST(CKVMatrix3D, CameraBuildersMatchOpenSceneGraph)
{
    osg::Vec3d const eye(30.0, -40.0, 25.0), center(1.0, 2.0, 3.0), up(0.0, 0.0, 1.0);
    expectNear(fromOsgMatrix(osg::Matrixd::lookAt(eye, center, up)),
               CKVMatrix3D::lookAt(CKVPoint3D(30.0, -40.0, 25.0), CKVPoint3D(1.0, 2.0, 3.0), CKVVector3D::kZAxis),
               1e-12);
    expectNear(fromOsgMatrix(osg::Matrixd::perspective(50.0, 1.6, 0.1, 1000.0)),
               CKVMatrix3D::perspective(50.0, 1.6, 0.1, 1000.0), 1e-12);
    expectNear(fromOsgMatrix(osg::Matrixd::ortho(-100.0, 100.0, -50.0, 60.0, 0.1, 200.0)),
               CKVMatrix3D::ortho(-100.0, 100.0, -50.0, 60.0, 0.1, 200.0), 1e-12);
    expectNear(fromOsgMatrix(osg::Matrixd::frustum(-1.0, 2.0, -0.5, 1.5, 1.0, 90.0)),
               CKVMatrix3D::frustum(-1.0, 2.0, -0.5, 1.5, 1.0, 90.0), 1e-12);
    expectNear(fromOsgMatrix(osg::Matrixd::rotate(0.8, osg::Vec3d(1.0, -2.0, 0.5))),
               CKVMatrix3D::rotation(0.8, CKVVector3D(1.0, -2.0, 0.5)), 1e-12);
}

TEST(CKVMatrix3D, CameraBuildersMapTheViewVolume)
{
    CKVMatrix3D const view =
        CKVMatrix3D::lookAt(CKVPoint3D(0.0, -10.0, 0.0), CKVPoint3D::kOrigin, CKVVector3D::kZAxis);
    expectNear(CKVPoint3D(0.0, 0.0, -10.0), view.transformPoint(CKVPoint3D::kOrigin), 1e-12);
    expectNear(CKVPoint3D(0.0, 1.0, -10.0), view.transformPoint(CKVPoint3D(0.0, 0.0, 1.0)), 1e-12);

    CKVMatrix3D const projection = CKVMatrix3D::perspective(90.0, 1.0, 1.0, 100.0);
    EXPECT_NEAR(-1.0, projection.transformPoint(CKVPoint3D(0.0, 0.0, -1.0)).z, 1e-12);
    EXPECT_NEAR(1.0, projection.transformPoint(CKVPoint3D(0.0, 0.0, -100.0)).z, 1e-12);
    EXPECT_NEAR(1.0, projection.transformPoint(CKVPoint3D(0.0, 5.0, -5.0)).y, 1e-12) << "top edge of a 90 degree view";

    // Degenerate input gives the identity instead of infinities.
    EXPECT_TRUE(CKVMatrix3D::lookAt(CKVPoint3D::kOrigin, CKVPoint3D::kOrigin, CKVVector3D::kZAxis).isIdentity());
    EXPECT_TRUE(CKVMatrix3D::lookAt(CKVPoint3D::kOrigin, CKVPoint3D(0.0, 0.0, 5.0), CKVVector3D::kZAxis).isIdentity());
    EXPECT_TRUE(CKVMatrix3D::ortho(1.0, 1.0, 0.0, 1.0, 0.0, 1.0).isIdentity());
    EXPECT_TRUE(CKVMatrix3D::perspective(45.0, 1.0, 0.0, 100.0).isIdentity());
}

} // namespace
} // namespace Kelvor
