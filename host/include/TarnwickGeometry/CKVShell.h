#pragma once

#include "TarnwickCommon/CKVVec.h"
#include "TarnwickGeometry/CKVGeometry.h"

#include <vector>

namespace Kelvor {

// A set of planar polygon faces over shared points. The face list has the
// format of CKVRenderBrepFaceData: per face a count n >= 3, then n point
// indices. The render data triangulates each face as a fan from its first
// point, which is exact for convex faces only; concave faces must be split
// by the caller.
class CKVShell : public CKVGeometry
{
    KV_DECLARE_RUNTIME_CLASS(CKVShell)
public:
    CKVShell();
    ~CKVShell() override;

    // Copies the arrays. `uv` and `normals` may be null with count 0;
    // otherwise their count must equal numPoints. With `flipFaces` each face
    // is stored in reverse order and the normals negated, turning the shell
    // inside out. False, keeping the previous shell, when anything does not
    // fit: null points or face list, a malformed face list, or a count
    // mismatch.
    bool setShell(CKVVec3<float> const* points, unsigned int numPoints, int const* facelist,
                  unsigned int facelistSize, CKVVec2<float> const* uv, unsigned int numUV, bool flipFaces,
                  CKVVec3<float> const* normals, unsigned int numNormals);

    unsigned int getNumPoints() const { return static_cast<unsigned int>(mPoints.size()); }
    unsigned int getNumFacelist() const { return static_cast<unsigned int>(mFacelist.size()); }
    unsigned int getNumFaces() const { return mNumFaces; }
    int const* getFacelistArray() const { return mFacelist.empty() ? nullptr : mFacelist.data(); }

    CKVBndBox bndBox() const override;
    // As CKVMesh::transformBy.
    bool transformBy(CKVMatrix3D const& matrix) override;
    // Triangles only (n - 2 per face of n points); null for an empty shell.
    kv_shared_ptr<CKVRenderGeometryData>
    getRenderData(CKVRenderGeometryData::SampleQuality quality = CKVRenderGeometryData::kSampleNormal) const override;

private:
    std::vector<CKVVec3<float>> mPoints;
    std::vector<CKVVec3<float>> mNormals;
    std::vector<CKVVec2<float>> mUV;
    std::vector<int> mFacelist;
    unsigned int mNumFaces = 0;
};

} // namespace Kelvor
