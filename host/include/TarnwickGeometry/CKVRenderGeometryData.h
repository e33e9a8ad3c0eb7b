#pragma once

#include "TarnwickCommon/CKVSharedObject.h"
#include "TarnwickCommon/CKVVec.h"
#include "TarnwickGeometry/CKVBndBox.h"

#include <vector>

namespace Kelvor {

// Tessellated points of a shape, in single precision for drawing, with
// optional per-point normals and texture coordinates (each either absent or
// exactly one per point). Built by the shapes' getRenderData; callers only
// read it.
class CKVRenderGeometryData : public CKVSharedObject
{
    KV_DECLARE_RUNTIME_CLASS(CKVRenderGeometryData)
public:
    // How finely curved surfaces are divided (see CKVGeometry::getSegmentCount).
    // Callers that do not care pass kSampleNormal (0).
    enum SampleQuality
    {
        kSampleNormal = 0,
        kSampleCoarse = 1,
        kSampleFine = 2
    };

    CKVRenderGeometryData() = default;
    ~CKVRenderGeometryData() override;

    unsigned int getNumPoints() const { return static_cast<unsigned int>(mPoints.size()); }
    CKVVec3<float> const* getPointsArray() const { return mPoints.empty() ? nullptr : mPoints.data(); }
    // Null when the data has no normals.
    CKVVec3<float> const* getNormalsArray() const { return mNormals.empty() ? nullptr : mNormals.data(); }
    // Null when the data has no texture coordinates.
    CKVVec2<float> const* getUVArray() const { return mUV.empty() ? nullptr : mUV.data(); }

    // Box of all points; empty without points.
    CKVBndBox bndBox() const;

    // Builders. Normals or texture coordinates whose count differs from the
    // number of points at the time of the call are rejected (false, nothing
    // stored), so the one-per-point rule always holds. setPoints drops
    // normals and texture coordinates that no longer fit.
    void setPoints(std::vector<CKVVec3<float>> points);
    bool setNormals(std::vector<CKVVec3<float>> normals);
    bool setUV(std::vector<CKVVec2<float>> uv);

private:
    std::vector<CKVVec3<float>> mPoints;
    std::vector<CKVVec3<float>> mNormals;
    std::vector<CKVVec2<float>> mUV;
};

} // namespace Kelvor
