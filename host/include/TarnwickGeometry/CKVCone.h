#pragma once

#include "TarnwickGeometry/CKVGeometry.h"
#include "TarnwickGeometry/CKVMatrix3D.h"
#include "TarnwickGeometry/CKVPoint3D.h"
#include "TarnwickGeometry/CKVVector3D.h"

namespace Kelvor {

// A right circular cone with its base disc: base centre, major vector from
// the base centre to the apex, base radius. Tessellated with
// getSegmentCount(quality) = N segments:
//   side: N + 1 base ring points (the seam repeated for texture coordinates)
//         and N apex points (one per segment, each with that segment's
//         normal), N triangles;
//   base: a centre and N ring points, N triangles;
// so 3N + 2 points and 2N triangles, always with normals.
// The setters define the cone in its own frame; transformBy places that
// frame (transforms accumulate), so a cone survives any affine matrix.
class CKVCone : public CKVGeometry
{
    KV_DECLARE_RUNTIME_CLASS(CKVCone)
public:
    CKVCone();
    ~CKVCone() override;

    void setBottomCenter(CKVPoint3D const& center) { mBottomCenter = center; }
    void setMajorVector(CKVVector3D const& axis) { mMajorVector = axis; }
    void setRadiu(double radius) { mRadius = radius; }

    CKVPoint3D const& getBottomCenter() const { return mBottomCenter; }
    CKVVector3D const& getMajorVector() const { return mMajorVector; }
    double getRadiu() const { return mRadius; }
    CKVMatrix3D const& getTransform() const { return mTransform; }

    // Box of the tessellated points (exact extremes for axis-aligned cones).
    CKVBndBox bndBox() const override;
    bool transformBy(CKVMatrix3D const& matrix) override;
    // Null for a zero major vector or a radius not above zero.
    kv_shared_ptr<CKVRenderGeometryData>
    getRenderData(CKVRenderGeometryData::SampleQuality quality = CKVRenderGeometryData::kSampleNormal) const override;

private:
    CKVPoint3D mBottomCenter;
    CKVVector3D mMajorVector;
    double mRadius = 0.0;
    CKVMatrix3D mTransform;
};

} // namespace Kelvor
