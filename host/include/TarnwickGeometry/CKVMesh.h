#pragma once

#include "TarnwickCommon/CKVVec.h"
#include "TarnwickGeometry/CKVGeometry.h"

#include <vector>

namespace Kelvor {

// A triangle mesh with optional per-point normals and texture coordinates.
// The setters copy the arrays. Normals and texture coordinates reach the
// render data only when there is exactly one per point; triangles with an
// index outside the points are left out of it.
class CKVMesh : public CKVGeometry
{
    KV_DECLARE_RUNTIME_CLASS(CKVMesh)
public:
    CKVMesh();
    ~CKVMesh() override;

    // Each returns false, changing nothing, for a null array with a non-zero
    // count. A zero count clears.
    bool setPoint(CKVVec3<float> const* points, unsigned int count);
    bool setNormal(CKVVec3<float> const* normals, unsigned int count);
    bool setUV(CKVVec2<float> const* uv, unsigned int count);
    bool setTriangle(CKVVec3<unsigned int> const* triangles, unsigned int count);

    unsigned int getNumPoints() const { return static_cast<unsigned int>(mPoints.size()); }
    unsigned int getNumTriangles() const { return static_cast<unsigned int>(mTriangles.size()); }
    CKVVec3<float> const* getPoints() const { return mPoints.empty() ? nullptr : mPoints.data(); }
    CKVVec3<unsigned int> const* getTriangles() const { return mTriangles.empty() ? nullptr : mTriangles.data(); }

    // Box of all points, referenced by a triangle or not.
    CKVBndBox bndBox() const override;
    // Points by the matrix, normals by its cofactor matrix (renormalised), so
    // normals stay perpendicular under non-uniform scaling.
    bool transformBy(CKVMatrix3D const& matrix) override;
    // Null without points or without a valid triangle.
    kv_shared_ptr<CKVRenderGeometryData>
    getRenderData(CKVRenderGeometryData::SampleQuality quality = CKVRenderGeometryData::kSampleNormal) const override;

private:
    std::vector<CKVVec3<float>> mPoints;
    std::vector<CKVVec3<float>> mNormals;
    std::vector<CKVVec2<float>> mUV;
    std::vector<CKVVec3<unsigned int>> mTriangles;
};

} // namespace Kelvor
