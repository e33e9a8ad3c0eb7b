#include "TarnwickGeometry/CKVRenderGeometryData.h"

#include "KVShapeUtil.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS_DYNAMIC(CKVRenderGeometryData, CKVSharedObject)

CKVRenderGeometryData::~CKVRenderGeometryData() = default;

CKVBndBox CKVRenderGeometryData::bndBox() const
{
    return ShapeUtil::boxOf(mPoints);
}

void CKVRenderGeometryData::setPoints(std::vector<CKVVec3<float>> points)
{
    mPoints = std::move(points);
    if (mNormals.size() != mPoints.size())
        mNormals.clear();
    if (mUV.size() != mPoints.size())
        mUV.clear();
}

bool CKVRenderGeometryData::setNormals(std::vector<CKVVec3<float>> normals)
{
    if (!normals.empty() && normals.size() != mPoints.size())
        return false;
    mNormals = std::move(normals);
    return true;
}

bool CKVRenderGeometryData::setUV(std::vector<CKVVec2<float>> uv)
{
    if (!uv.empty() && uv.size() != mPoints.size())
        return false;
    mUV = std::move(uv);
    return true;
}

} // namespace Kelvor
