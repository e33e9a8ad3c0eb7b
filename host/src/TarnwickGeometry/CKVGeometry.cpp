#include "TarnwickGeometry/CKVGeometry.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS(CKVGeometry, CKVSharedObject)

CKVGeometry::~CKVGeometry() = default;

unsigned int CKVGeometry::getSegmentCount(CKVRenderGeometryData::SampleQuality quality)
{
    // 32 segments keep a circle of 10 m radius within 5 cm of the true one
    // (the gap is r (1 - cos(pi / 32)) ~ 0.005 r), enough for building parts
    // seen whole; fine quality is for close-ups, coarse for handles and icons.
    switch (quality) {
    case CKVRenderGeometryData::kSampleCoarse:
        return 16;
    case CKVRenderGeometryData::kSampleFine:
        return 64;
    case CKVRenderGeometryData::kSampleNormal:
    default:
        return 32;
    }
}

} // namespace Kelvor
