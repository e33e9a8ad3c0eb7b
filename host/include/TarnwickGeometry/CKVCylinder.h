#pragma once

#include "TarnwickGeometry/CKVGeometry.h"
#include "TarnwickGeometry/CKVMatrix3D.h"
#include "TarnwickGeometry/CKVPoint3D.h"

namespace Kelvor {

// A right circular cylinder with both caps, from its bottom centre to its
// top centre. Tessellated with getSegmentCount(quality) = N segments:
//   side: N + 1 bottom and N + 1 top ring points (the seam repeated for
//         texture coordinates), 2N triangles;
//   each cap: a centre and N ring points, N triangles;
// so 4N + 4 points and 4N triangles, always with normals.
// As with CKVCone, the setters work in the shape's own frame and
// transformBy places that frame.
class CKVCylinder : public CKVGeometry
{
    KV_DECLARE_RUNTIME_CLASS(CKVCylinder)
public:
    CKVCylinder();
    ~CKVCylinder() override;

    void setPoints(CKVPoint3D const& bottom, CKVPoint3D const& top)
    {
        mBottom = bottom;
        mTop = top;
    }
    void setRadiu(double radius) { mRadius = radius; }

    CKVPoint3D const& getBottomPoint() const { return mBottom; }
    CKVPoint3D const& getTopPoint() const { return mTop; }
    double getRadiu() const { return mRadius; }
    CKVMatrix3D const& getTransform() const { return mTransform; }

    CKVBndBox bndBox() const override;
    bool transformBy(CKVMatrix3D const& matrix) override;
    // Null when the two points coincide or the radius is not above zero.
    kv_shared_ptr<CKVRenderGeometryData>
    getRenderData(CKVRenderGeometryData::SampleQuality quality = CKVRenderGeometryData::kSampleNormal) const override;

private:
    CKVPoint3D mBottom;
    CKVPoint3D mTop;
    double mRadius = 0.0;
    CKVMatrix3D mTransform;
};

} // namespace Kelvor
