#include "TarnwickGeometry/CKVBndBox.h"
#include "TarnwickGeometry/CKVMatrix3D.h"
#include "TarnwickGeometry/CKVPlane.h"
#include "TarnwickGeometry/CKVPoint3D.h"
#include "TarnwickGeometry/CKVRay3D.h"
#include "TarnwickGeometry/CKVVector3D.h"
#include "TarnwickGeometry/KVMath.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace Kelvor {
namespace {

CKVPlane const kGround(CKVPoint3D::kOrigin, CKVVector3D(0.0, 0.0, 5.0));

TEST(KVMath, Predicates)
{
    EXPECT_TRUE(Math::isNormal(1e-300));
    EXPECT_FALSE(Math::isNormal(0.0));
    EXPECT_FALSE(Math::isNormal(std::numeric_limits<double>::infinity()));
    EXPECT_FALSE(Math::isNormal(std::nan("")));

    EXPECT_TRUE(Math::isZero(1e-7, 1e-6));
    EXPECT_FALSE(Math::isZero(-2e-6, 1e-6));
    EXPECT_FALSE(Math::isZero(std::nan(""), 1.0));

    EXPECT_EQ(0, Math::compareDbl(1.0, 1.0 + 1e-7, 9.999999974752427e-7));
    EXPECT_LT(Math::compareDbl(1.0, 2.0, 1e-6), 0);
    EXPECT_GT(Math::compareDbl(2.0, 1.0, 1e-6), 0);
    EXPECT_NE(0, Math::compareDbl(std::nan(""), 1.0, 1e-6));
}

TEST(CKVVector3D, NormalizeLeavesTinyVectorsAlone)
{
    CKVVector3D v(3.0, 0.0, 4.0);
    CKVVector3D& self = v.normalize(1e-6);
    EXPECT_EQ(&v, &self);
    EXPECT_DOUBLE_EQ(0.6, v.x);
    EXPECT_DOUBLE_EQ(0.8, v.z);

    CKVVector3D tiny(1e-9, 0.0, 0.0);
    EXPECT_EQ(tiny, tiny.normal(1e-6));
    EXPECT_TRUE(tiny.isZeroLength(1e-6));
    EXPECT_FALSE(tiny.isZeroLength(1e-12));
    EXPECT_TRUE(CKVVector3D().normal().isZeroLength());
}

TEST(CKVVector3D, ProductsAndAngles)
{
    EXPECT_EQ(CKVVector3D::kZAxis, CKVVector3D::kXAxis.crossProduct(CKVVector3D::kYAxis));
    EXPECT_EQ(0.0, CKVVector3D::kXAxis.dotProduct(CKVVector3D::kYAxis));
    EXPECT_EQ(CKVVector3D(2.0, 4.0, 6.0), CKVVector3D(1.0, 2.0, 3.0) * 2.0);
    EXPECT_NEAR(Math::kPi / 2.0, CKVVector3D::kXAxis.angleTo(CKVVector3D(0.0, 7.0, 0.0)), 1e-15);
    EXPECT_NEAR(Math::kPi, CKVVector3D::kXAxis.angleTo(-CKVVector3D::kXAxis), 1e-15);
    EXPECT_TRUE(CKVVector3D(0.0, 0.0, 2.0).isParallelTo(CKVVector3D(0.0, 0.0, -3.0)));
    EXPECT_FALSE(CKVVector3D(0.0, 0.1, 2.0).isParallelTo(CKVVector3D::kZAxis, 1e-3));
}

TEST(CKVPoint3D, DistanceToPlaneIsSignedUnlessAbsolute)
{
    CKVPoint3D const below(1.0, 2.0, -3.0);
    EXPECT_DOUBLE_EQ(-3.0, below.distanceTo(kGround, false));
    EXPECT_DOUBLE_EQ(3.0, below.distanceTo(kGround, true));
    EXPECT_DOUBLE_EQ(5.0, CKVPoint3D(3.0, 4.0, 0.0).distanceTo(CKVPoint3D::kOrigin));
    EXPECT_EQ(CKVPoint3D(1.0, 2.0, 0.0), below.orthoProjectTo(kGround));
}

TEST(CKVPoint3D, ProjectToAlongADirection)
{
    CKVPoint3D const p(1.0, 2.0, 5.0);
    CKVPoint3D out;
    ASSERT_TRUE(p.projectTo(kGround, CKVVector3D(0.0, 0.0, -2.0), out, 1e-6));
    EXPECT_TRUE(out.isEqualTo(CKVPoint3D(1.0, 2.0, 0.0)));
    // The direction's sense does not matter: a projection, not a ray.
    ASSERT_TRUE(p.projectTo(kGround, CKVVector3D(-1.0, 0.0, 1.0), out, 1e-6));
    EXPECT_TRUE(out.isEqualTo(CKVPoint3D(6.0, 2.0, 0.0)));

    CKVPoint3D const untouched(9.0, 9.0, 9.0);
    out = untouched;
    EXPECT_FALSE(p.projectTo(kGround, CKVVector3D(1.0, 1.0, 0.0), out, 1e-6)) << "parallel to the plane";
    EXPECT_FALSE(p.projectTo(kGround, CKVVector3D(1.0, 0.0, 1e-8), out, 1e-6)) << "parallel within tolerance";
    EXPECT_FALSE(p.projectTo(kGround, CKVVector3D(), out, 1e-6)) << "no direction";
    EXPECT_FALSE(p.projectTo(CKVPlane(CKVPoint3D::kOrigin, CKVVector3D()), CKVVector3D::kZAxis, out, 1e-6));
    EXPECT_EQ(untouched, out);
}

TEST(CKVRay3D, HitPlaneInFrontOnly)
{
    CKVRay3D const down(CKVPoint3D(1.0, 1.0, 10.0), CKVVector3D(0.0, 1.0, -1.0));
    CKVPoint3D hit;
    ASSERT_TRUE(down.hitPlane(kGround, hit, 1e-6));
    EXPECT_TRUE(hit.isEqualTo(CKVPoint3D(1.0, 11.0, 0.0)));

    CKVPoint3D const untouched(7.0, 7.0, 7.0);
    hit = untouched;
    EXPECT_FALSE(CKVRay3D(CKVPoint3D(0.0, 0.0, 1.0), CKVVector3D::kXAxis).hitPlane(kGround, hit, 1e-6))
        << "parallel";
    EXPECT_FALSE(CKVRay3D(CKVPoint3D(0.0, 0.0, 1.0), CKVVector3D::kZAxis).hitPlane(kGround, hit, 1e-6))
        << "plane behind the origin";
    EXPECT_FALSE(CKVRay3D(CKVPoint3D(0.0, 0.0, 1.0), CKVVector3D()).hitPlane(kGround, hit, 1e-6));
    EXPECT_EQ(untouched, hit);

    ASSERT_TRUE(CKVRay3D(CKVPoint3D(2.0, 3.0, 0.0), CKVVector3D::kZAxis).hitPlane(kGround, hit, 1e-6));
    EXPECT_EQ(CKVPoint3D(2.0, 3.0, 0.0), hit) << "an origin on the plane is its own hit";
}

TEST(CKVPlane, NormalisesAndDescribesItself)
{
    CKVPlane const plane(CKVPoint3D(0.0, 0.0, 2.0), CKVVector3D(0.0, 0.0, -4.0));
    EXPECT_EQ(CKVVector3D(0.0, 0.0, -1.0), plane.getNormal());
    double a, b, c, d;
    plane.getCoefficients(a, b, c, d);
    EXPECT_EQ(-1.0, c);
    EXPECT_EQ(2.0, d);
    EXPECT_FALSE(CKVPlane(CKVPoint3D::kOrigin, CKVVector3D()).isValid());
}

TEST(CKVBndBox, EmptyUntilAPointArrives)
{
    CKVBndBox box;
    EXPECT_FALSE(box.valid());
    box.addBndBox(CKVBndBox());
    EXPECT_FALSE(box.valid()) << "an empty box adds nothing";
    EXPECT_FALSE(box.contains(CKVPoint3D::kOrigin));

    box.addPoint(CKVPoint3D(1.0, 2.0, 3.0));
    EXPECT_TRUE(box.valid());
    EXPECT_EQ(box.minPt(), box.maxPt());
    box.reset();
    EXPECT_FALSE(box.valid());
}

TEST(CKVBndBox, CornersFollowTheBitOrder)
{
    CKVBndBox const box(CKVPoint3D(4.0, 5.0, 6.0), CKVPoint3D(-1.0, -2.0, -3.0));
    EXPECT_EQ(CKVPoint3D(-1.0, -2.0, -3.0), box.corner(0));
    EXPECT_EQ(box.minPt(), box.corner(0));
    EXPECT_EQ(box.maxPt(), box.corner(7));
    EXPECT_EQ(CKVPoint3D(4.0, -2.0, -3.0), box.corner(1));
    EXPECT_EQ(CKVPoint3D(-1.0, 5.0, -3.0), box.corner(2));
    EXPECT_EQ(CKVPoint3D(-1.0, -2.0, 6.0), box.corner(4));
    EXPECT_EQ(CKVPoint3D(4.0, -2.0, 6.0), box.corner(5));
    EXPECT_EQ(CKVPoint3D(1.5, 1.5, 1.5), box.midPt());
}

TEST(CKVBndBox, GrowsMergesAndTransforms)
{
    CKVBndBox box(CKVPoint3D(0.0, 0.0, 0.0), CKVPoint3D(2.0, 2.0, 2.0));
    box.addBndBox(CKVBndBox(CKVPoint3D(-1.0, 1.0, 1.0), CKVPoint3D(1.0, 1.0, 5.0)));
    EXPECT_EQ(CKVPoint3D(-1.0, 0.0, 0.0), box.minPt());
    EXPECT_EQ(CKVPoint3D(2.0, 2.0, 5.0), box.maxPt());
    EXPECT_TRUE(box.contains(CKVPoint3D(2.0, 2.0, 5.0)));
    EXPECT_FALSE(box.contains(CKVPoint3D(2.1, 0.0, 0.0)));
    EXPECT_TRUE(box.intersects(CKVBndBox(CKVPoint3D(2.0, 2.0, 5.0), CKVPoint3D(3.0, 3.0, 6.0))));
    EXPECT_FALSE(box.intersects(CKVBndBox(CKVPoint3D(3.0, 0.0, 0.0), CKVPoint3D(4.0, 1.0, 1.0))));

    CKVBndBox square(CKVPoint3D(-1.0, -1.0, 0.0), CKVPoint3D(1.0, 1.0, 1.0));
    square.transformBy(CKVMatrix3D::rotation(Math::kPi / 4.0, CKVVector3D::kZAxis));
    EXPECT_NEAR(std::sqrt(2.0), square.maxPt().x, 1e-12);
    EXPECT_NEAR(-std::sqrt(2.0), square.minPt().y, 1e-12);
    CKVBndBox empty;
    empty.transformBy(CKVMatrix3D::translation(CKVVector3D(1.0, 0.0, 0.0)));
    EXPECT_FALSE(empty.valid());
}

} // namespace
} // namespace Kelvor
