#include "TarnwickCommon/kv_shared_ptr.h"
#include "TarnwickGeometry/CKVCone.h"
#include "TarnwickGeometry/CKVCylinder.h"
#include "TarnwickGeometry/CKVMesh.h"
#include "TarnwickGeometry/CKVRenderBrepFaceData.h"
#include "TarnwickGeometry/CKVShell.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace Kelvor {
namespace {

unsigned int const kN = CKVGeometry::getSegmentCount(CKVRenderGeometryData::kSampleNormal);

CKVVector3D toVector(CKVVec3<float> const& v)
{
    return CKVVector3D(v.x, v.y, v.z);
}

// Render data held for the length of a test, seen as face data (null when
// it is not).
struct Faces
{
    kv_shared_ptr<CKVRenderGeometryData> data;

    CKVRenderBrepFaceData const* get() const
    {
        if (!data || !data->isKindOf(CKVRenderBrepFaceData::desc()))
            return nullptr;
        return static_cast<CKVRenderBrepFaceData const*>(data.get());
    }
    CKVRenderBrepFaceData const* operator->() const { return get(); }
    CKVRenderBrepFaceData const& operator*() const { return *get(); }
};

Faces faces(kv_shared_ptr<CKVRenderGeometryData> const& data)
{
    return Faces{data};
}

// Walks a triangle-only face list, checking its shape, and returns the signed
// volume it encloses (positive when the triangles face outwards). Where the
// data has normals, each triangle's winding must agree with them.
double checkTrianglesAndVolume(CKVRenderBrepFaceData const& data)
{
    int const* list = data.getFacelistArray();
    CKVVec3<float> const* p = data.getPointsArray();
    CKVVec3<float> const* n = data.getNormalsArray();
    EXPECT_EQ(data.getNumFaces() * 4, data.getNumFacelist());
    double volume = 0.0;
    for (unsigned int f = 0; f < data.getNumFaces(); ++f) {
        int const* t = list + 4 * f;
        EXPECT_EQ(3, t[0]);
        CKVVector3D const a = toVector(p[t[1]]), b = toVector(p[t[2]]), c = toVector(p[t[3]]);
        CKVVector3D const area = (b - a).crossProduct(c - a);
        volume += a.dotProduct(b.crossProduct(c)) / 6.0;
        if (n && !area.isZeroLength(1e-9)) {
            CKVVector3D const mean = toVector(n[t[1]]) + toVector(n[t[2]]) + toVector(n[t[3]]);
            EXPECT_GT(mean.dotProduct(area), 0.0) << "face " << f << " is wound against its normals";
        }
    }
    if (n) {
        for (unsigned int i = 0; i < data.getNumPoints(); ++i)
            EXPECT_NEAR(1.0, toVector(n[i]).length(), 1e-6);
    }
    return volume;
}

void expectBox(CKVBndBox const& box, CKVPoint3D const& min, CKVPoint3D const& max, double tolerance)
{
    ASSERT_TRUE(box.valid());
    EXPECT_TRUE(box.minPt().isEqualTo(min, tolerance)) << box.minPt().x << " " << box.minPt().y << " " << box.minPt().z;
    EXPECT_TRUE(box.maxPt().isEqualTo(max, tolerance)) << box.maxPt().x << " " << box.maxPt().y << " " << box.maxPt().z;
}

// Area of the regular polygon that approximates a circle of radius r.
double polygonArea(double r, unsigned int n)
{
    return 0.5 * n * r * r * std::sin(2.0 * Math::kPi / n);
}

kv_shared_ptr<CKVCylinder> makeCylinder()
{
    kv_shared_ptr<CKVCylinder> cylinder(new CKVCylinder);
    cylinder->setPoints(CKVPoint3D(0.0, 0.0, 0.0), CKVPoint3D(0.0, 0.0, 10.0));
    cylinder->setRadiu(2.0);
    return cylinder;
}

TEST(CKVCylinder, ClosedTessellationWithCaps)
{
    kv_shared_ptr<CKVCylinder> cylinder = makeCylinder();
    kv_shared_ptr<CKVRenderGeometryData> data = cylinder->getRenderData(CKVRenderGeometryData::kSampleNormal);
    Faces const f = faces(data);
    ASSERT_NE(nullptr, f.get());
    EXPECT_EQ(4 * kN + 4, f->getNumPoints());
    EXPECT_EQ(4 * kN, f->getNumFaces());
    ASSERT_NE(nullptr, f->getUVArray());
    EXPECT_NEAR(polygonArea(2.0, kN) * 10.0, checkTrianglesAndVolume(*f), 1e-3);
    expectBox(cylinder->bndBox(), CKVPoint3D(-2.0, -2.0, 0.0), CKVPoint3D(2.0, 2.0, 10.0), 1e-6);

    kv_shared_ptr<CKVRenderGeometryData> fine = cylinder->getRenderData(CKVRenderGeometryData::kSampleFine);
    EXPECT_EQ(4 * CKVGeometry::getSegmentCount(CKVRenderGeometryData::kSampleFine),
              faces(fine)->getNumFaces());
}

TEST(CKVCylinder, SlantedAxisKeepsTheRadius)
{
    kv_shared_ptr<CKVCylinder> cylinder(new CKVCylinder);
    CKVPoint3D const bottom(1.0, 1.0, 1.0), top(4.0, 5.0, 1.0);
    cylinder->setPoints(bottom, top);
    cylinder->setRadiu(1.5);
    Faces const f = faces(cylinder->getRenderData());
    ASSERT_NE(nullptr, f.get());
    CKVVector3D const axis = (top - bottom).normal();
    // Side points (the first 2N + 2) lie at the radius from the axis.
    for (unsigned int i = 0; i < 2 * kN + 2; ++i) {
        CKVVector3D const offset = toVector(f->getPointsArray()[i]) - bottom.asVector();
        EXPECT_NEAR(1.5, (offset - axis * offset.dotProduct(axis)).length(), 1e-5);
    }
    EXPECT_NEAR(polygonArea(1.5, kN) * 5.0, checkTrianglesAndVolume(*f), 1e-3);
}

TEST(CKVCone, ClosedTessellationWithBase)
{
    kv_shared_ptr<CKVCone> cone(new CKVCone);
    cone->setBottomCenter(CKVPoint3D(0.0, 0.0, 75.0));
    cone->setMajorVector(CKVVector3D(0.0, 0.0, 25.0));
    cone->setRadiu(10.0);
    Faces const f = faces(cone->getRenderData());
    ASSERT_NE(nullptr, f.get());
    EXPECT_EQ(3 * kN + 2, f->getNumPoints());
    EXPECT_EQ(2 * kN, f->getNumFaces());
    // Volume about the origin: the cone's own plus nothing else, as it is closed.
    EXPECT_NEAR(polygonArea(10.0, kN) * 25.0 / 3.0, checkTrianglesAndVolume(*f), 0.05);
    expectBox(cone->bndBox(), CKVPoint3D(-10.0, -10.0, 75.0), CKVPoint3D(10.0, 10.0, 100.0), 1e-5);

    cone->setGetRenderDataUV(false);
    EXPECT_EQ(nullptr, cone->getRenderData()->getUVArray());
    EXPECT_NE(nullptr, cone->getRenderData()->getNormalsArray());
}

TEST(CKVCone, DegenerateShapesHaveNothingToDraw)
{
    kv_shared_ptr<CKVCone> cone(new CKVCone);
    cone->setRadiu(1.0);
    EXPECT_FALSE(cone->getRenderData().valid()) << "no major vector";
    EXPECT_FALSE(cone->bndBox().valid());

    kv_shared_ptr<CKVCylinder> cylinder = makeCylinder();
    cylinder->setRadiu(0.0);
    EXPECT_FALSE(cylinder->getRenderData().valid());
    cylinder->setRadiu(1.0);
    cylinder->setPoints(CKVPoint3D(1.0, 1.0, 1.0), CKVPoint3D(1.0, 1.0, 1.0));
    EXPECT_FALSE(cylinder->getRenderData().valid());
}

TEST(CKVCylinder, TransformByMovesAndReshapes)
{
    kv_shared_ptr<CKVCylinder> cylinder = makeCylinder();
    ASSERT_TRUE(cylinder->transformBy(CKVMatrix3D::translation(CKVVector3D(100.0, 0.0, -5.0))));
    expectBox(cylinder->bndBox(), CKVPoint3D(98.0, -2.0, -5.0), CKVPoint3D(102.0, 2.0, 5.0), 1e-5);

    // Transforms accumulate, later ones applied last; a non-uniform scale
    // must keep normals consistent with the faces.
    ASSERT_TRUE(cylinder->transformBy(CKVMatrix3D::scaling(1.0, 3.0, 0.5)));
    expectBox(cylinder->bndBox(), CKVPoint3D(98.0, -6.0, -2.5), CKVPoint3D(102.0, 6.0, 2.5), 1e-5);
    Faces const f = faces(cylinder->getRenderData());
    ASSERT_NE(nullptr, f.get());
    EXPECT_NEAR(polygonArea(2.0, kN) * 10.0 * 1.5, checkTrianglesAndVolume(*f), 1e-2);

    CKVMatrix3D broken;
    broken(0, 0) = std::nan("");
    EXPECT_FALSE(cylinder->transformBy(broken));
    expectBox(cylinder->bndBox(), CKVPoint3D(98.0, -6.0, -2.5), CKVPoint3D(102.0, 6.0, 2.5), 1e-5);
}

TEST(CKVMesh, PassesValidTrianglesThrough)
{
    CKVVec3<float> const points[] = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 2}};
    CKVVec3<float> const normals[] = {{0, 0, 1}, {0, 0, 1}, {0, 0, 1}, {0, 0, 1}};
    CKVVec2<float> const uv[] = {{0, 0}, {1, 0}};
    CKVVec3<unsigned int> const triangles[] = {{0, 1, 2}, {0, 2, 3}, {0, 2, 9}};

    kv_shared_ptr<CKVMesh> mesh(new CKVMesh);
    EXPECT_FALSE(mesh->setPoint(nullptr, 3));
    ASSERT_TRUE(mesh->setPoint(points, 4));
    ASSERT_TRUE(mesh->setNormal(normals, 4));
    ASSERT_TRUE(mesh->setUV(uv, 2));
    ASSERT_TRUE(mesh->setTriangle(triangles, 3));
    expectBox(mesh->bndBox(), CKVPoint3D(0.0, 0.0, 0.0), CKVPoint3D(1.0, 1.0, 2.0), 0.0);

    Faces const f = faces(mesh->getRenderData());
    ASSERT_NE(nullptr, f.get());
    EXPECT_EQ(4u, f->getNumPoints());
    EXPECT_EQ(2u, f->getNumFaces()) << "the triangle naming point 9 is left out";
    int const expected[] = {3, 0, 1, 2, 3, 0, 2, 3};
    EXPECT_TRUE(std::equal(expected, expected + 8, f->getFacelistArray()));
    EXPECT_NE(nullptr, f->getNormalsArray());
    EXPECT_EQ(nullptr, f->getUVArray()) << "two texture coordinates for four points";

    EXPECT_FALSE(CKVMesh().getRenderData().valid());
}

TEST(CKVMesh, TransformByMovesPointsAndTurnsNormals)
{
    CKVVec3<float> const points[] = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
    CKVVec3<float> const normals[] = {{1, 0, 0}, {1, 0, 0}, {1, 0, 0}};
    CKVVec3<unsigned int> const triangle(0, 1, 2);
    CKVMesh mesh;
    mesh.setPoint(points, 3);
    mesh.setNormal(normals, 3);
    mesh.setTriangle(&triangle, 1);
    ASSERT_TRUE(mesh.transformBy(CKVMatrix3D::translation(CKVVector3D(0.0, 0.0, 7.0)) *
                                 CKVMatrix3D::rotation(Math::kPi / 2.0, CKVVector3D::kZAxis)));
    expectBox(mesh.bndBox(), CKVPoint3D(-1.0, 0.0, 7.0), CKVPoint3D(0.0, 1.0, 7.0), 1e-6);
    CKVVec3<float> const n = mesh.getRenderData()->getNormalsArray()[0];
    EXPECT_TRUE(toVector(n).isEqualTo(CKVVector3D::kYAxis, 1e-6));
}

TEST(CKVShell, FansConvexFacesIntoTriangles)
{
    // A unit square and a pentagon beside it.
    CKVVec3<float> const points[] = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0},
                                     {2, 0, 0}, {3, 0, 0}, {3.5f, 1, 0}, {2.5f, 2, 0}, {1.5f, 1, 0}};
    int const facelist[] = {4, 0, 1, 2, 3, 5, 4, 5, 6, 7, 8};
    kv_shared_ptr<CKVShell> shell(new CKVShell);
    ASSERT_TRUE(shell->setShell(points, 9, facelist, 11, nullptr, 0, false, nullptr, 0));
    EXPECT_EQ(2u, shell->getNumFaces());
    expectBox(shell->bndBox(), CKVPoint3D(0.0, 0.0, 0.0), CKVPoint3D(3.5, 2.0, 0.0), 0.0);

    Faces const f = faces(shell->getRenderData());
    ASSERT_NE(nullptr, f.get());
    EXPECT_EQ(5u, f->getNumFaces());
    int const expected[] = {3, 0, 1, 2, 3, 0, 2, 3, 3, 4, 5, 6, 3, 4, 6, 7, 3, 4, 7, 8};
    EXPECT_TRUE(std::equal(expected, expected + 20, f->getFacelistArray()));
    EXPECT_EQ(nullptr, f->getNormalsArray());
}

TEST(CKVShell, RejectsMalformedInputAndKeepsThePreviousShell)
{
    CKVVec3<float> const points[] = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
    CKVVec2<float> const uv[] = {{0, 0}, {1, 0}};
    int const triangle[] = {3, 0, 1, 2};
    int const tooFew[] = {2, 0, 1};
    int const outside[] = {3, 0, 1, 3};
    int const truncated[] = {3, 0, 1, 2, 3, 0};
    int const negative[] = {3, 0, -1, 2};

    CKVShell shell;
    ASSERT_TRUE(shell.setShell(points, 3, triangle, 4, nullptr, 0, false, nullptr, 0));
    EXPECT_FALSE(shell.setShell(points, 3, tooFew, 3, nullptr, 0, false, nullptr, 0));
    EXPECT_FALSE(shell.setShell(points, 3, outside, 4, nullptr, 0, false, nullptr, 0));
    EXPECT_FALSE(shell.setShell(points, 3, truncated, 6, nullptr, 0, false, nullptr, 0));
    EXPECT_FALSE(shell.setShell(points, 3, negative, 4, nullptr, 0, false, nullptr, 0));
    EXPECT_FALSE(shell.setShell(points, 3, triangle, 4, uv, 2, false, nullptr, 0)) << "uv count";
    EXPECT_FALSE(shell.setShell(nullptr, 3, triangle, 4, nullptr, 0, false, nullptr, 0));
    EXPECT_FALSE(shell.setShell(points, 3, nullptr, 4, nullptr, 0, false, nullptr, 0));
    EXPECT_EQ(3u, shell.getNumPoints());
    EXPECT_EQ(1u, shell.getNumFaces());
}

// The axis handle turns a cylinder's render data into a shell.
TEST(CKVShell, TakesAShapesRenderDataAndCanTurnItInsideOut)
{
    kv_shared_ptr<CKVCylinder> cylinder = makeCylinder();
    Faces const f = faces(cylinder->getRenderData());
    ASSERT_NE(nullptr, f.get());

    kv_shared_ptr<CKVShell> shell(new CKVShell);
    ASSERT_TRUE(shell->setShell(f->getPointsArray(), f->getNumPoints(), f->getFacelistArray(), f->getNumFacelist(),
                                f->getUVArray(), f->getNumPoints(), false, f->getNormalsArray(), f->getNumPoints()));
    expectBox(shell->bndBox(), cylinder->bndBox().minPt(), cylinder->bndBox().maxPt(), 0.0);
    Faces const again = faces(shell->getRenderData());
    ASSERT_NE(nullptr, again.get());
    EXPECT_EQ(f->getNumFaces(), again->getNumFaces());
    double const volume = checkTrianglesAndVolume(*again);
    EXPECT_GT(volume, 0.0);

    ASSERT_TRUE(shell->setShell(f->getPointsArray(), f->getNumPoints(), f->getFacelistArray(), f->getNumFacelist(),
                                nullptr, 0, true, f->getNormalsArray(), f->getNumPoints()));
    Faces const flipped = faces(shell->getRenderData());
    EXPECT_NEAR(-volume, checkTrianglesAndVolume(*flipped), 1e-6);

    ASSERT_TRUE(shell->transformBy(CKVMatrix3D::translation(CKVVector3D(0.0, 0.0, 1.0))));
    expectBox(shell->bndBox(), CKVPoint3D(-2.0, -2.0, 1.0), CKVPoint3D(2.0, 2.0, 11.0), 1e-5);
}

TEST(CKVGeometry, ShapesAreHostObjects)
{
    CKVRuntimeClass const* record = CKVRuntimeClass::find("CKVCone");
    ASSERT_NE(nullptr, record);
    CKVObject* object = record->createObject();
    ASSERT_NE(nullptr, object);
    ASSERT_TRUE(object->isKindOf(CKVGeometry::desc()));
    kv_shared_ptr<CKVGeometry> shape(static_cast<CKVGeometry*>(object));
    EXPECT_TRUE(shape->isKindOf(CKVCone::desc()));
    EXPECT_FALSE(shape->isKindOf(CKVMesh::desc()));
    EXPECT_FALSE(CKVGeometry::desc()->canCreate());
    EXPECT_TRUE(CKVRenderBrepFaceData::desc()->isDerivedFrom(CKVRenderGeometryData::desc()));
}

} // namespace
} // namespace Kelvor
