#pragma once

#include "TarnwickCommon/CKVSharedObject.h"
#include "TarnwickCommon/kv_shared_ptr.h"
#include "TarnwickGeometry/CKVBndBox.h"
#include "TarnwickGeometry/CKVMatrix3D.h"
#include "TarnwickGeometry/CKVRenderGeometryData.h"

namespace Kelvor {

// Base of the shapes. A shape hands out its tessellation as render data
// (a CKVRenderBrepFaceData of triangles for every shape here), can be moved
// by a matrix, and knows its box, which is the box of its render data.
class CKVGeometry : public CKVSharedObject
{
    KV_DECLARE_RUNTIME_CLASS(CKVGeometry)
public:
    ~CKVGeometry() override;

    // Whether getRenderData fills texture coordinates (default true).
    void setGetRenderDataUV(bool withUV) { mRenderDataUV = withUV; }
    bool getGetRenderDataUV() const { return mRenderDataUV; }

    // Box of the render data at kSampleNormal; empty for a shape without data.
    virtual CKVBndBox bndBox() const = 0;
    // Moves the shape; false, changing nothing, when the matrix cannot apply.
    virtual bool transformBy(CKVMatrix3D const& matrix) = 0;
    // A new data object, or null when the shape has nothing to draw (no
    // points, or degenerate dimensions).
    virtual kv_shared_ptr<CKVRenderGeometryData>
    getRenderData(CKVRenderGeometryData::SampleQuality quality = CKVRenderGeometryData::kSampleNormal) const = 0;

    // Segments around the circumference of round shapes: 32 at normal
    // quality, 16 coarse, 64 fine. Multiples of 4, so that circles about an
    // axis-aligned direction reach their exact extremes.
    static unsigned int getSegmentCount(CKVRenderGeometryData::SampleQuality quality);

protected:
    CKVGeometry() = default;
    CKVGeometry(CKVGeometry const& other) = default;

private:
    bool mRenderDataUV = true;
};

} // namespace Kelvor
