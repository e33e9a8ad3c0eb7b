#include "TarnwickGeometry/CKVShell.h"

#include "KVShapeUtil.h"
#include "TarnwickGeometry/CKVRenderBrepFaceData.h"

#include <algorithm>

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS_DYNAMIC(CKVShell, CKVGeometry)

namespace {

// A per-point array is either absent (null or count 0) or has one entry per point.
template <class T>
bool fitsPoints(T const* array, unsigned int count, unsigned int numPoints)
{
    return count == 0 || (array && count == numPoints);
}

} // namespace

CKVShell::CKVShell() = default;

CKVShell::~CKVShell() = default;

bool CKVShell::setShell(CKVVec3<float> const* points, unsigned int numPoints, int const* facelist,
                        unsigned int facelistSize, CKVVec2<float> const* uv, unsigned int numUV, bool flipFaces,
                        CKVVec3<float> const* normals, unsigned int numNormals)
{
    if (!points || numPoints == 0 || !facelist || facelistSize == 0)
        return false;
    if (!fitsPoints(uv, numUV, numPoints) || !fitsPoints(normals, numNormals, numPoints))
        return false;
    unsigned int faces = 0;
    if (!CKVRenderBrepFaceData::checkFacelist(facelist, facelistSize, numPoints, faces))
        return false;

    mPoints.assign(points, points + numPoints);
    mUV.assign(uv, uv + numUV);
    mNormals.assign(normals, normals + numNormals);
    mFacelist.assign(facelist, facelist + facelistSize);
    mNumFaces = faces;
    if (flipFaces) {
        for (size_t pos = 0; pos < mFacelist.size(); pos += static_cast<size_t>(mFacelist[pos]) + 1)
            std::reverse(mFacelist.begin() + static_cast<long>(pos) + 1,
                         mFacelist.begin() + static_cast<long>(pos) + 1 + mFacelist[pos]);
        for (CKVVec3<float>& n : mNormals)
            n = CKVVec3<float>(-n.x, -n.y, -n.z);
    }
    return true;
}

CKVBndBox CKVShell::bndBox() const
{
    return ShapeUtil::boxOf(mPoints);
}

bool CKVShell::transformBy(CKVMatrix3D const& matrix)
{
    if (!ShapeUtil::isFinite(matrix))
        return false;
    ShapeUtil::transformPoints(mPoints, matrix);
    ShapeUtil::transformNormals(mNormals, ShapeUtil::normalMatrix(matrix));
    return true;
}

kv_shared_ptr<CKVRenderGeometryData> CKVShell::getRenderData(CKVRenderGeometryData::SampleQuality) const
{
    if (mPoints.empty() || mFacelist.empty())
        return nullptr;

    std::vector<int> triangles;
    triangles.reserve(mFacelist.size() * 2);
    for (size_t pos = 0; pos < mFacelist.size(); pos += static_cast<size_t>(mFacelist[pos]) + 1) {
        int const count = mFacelist[pos];
        int const* face = &mFacelist[pos + 1];
        // Fan from the first point: right for convex faces.
        for (int k = 1; k + 1 < count; ++k)
            triangles.insert(triangles.end(), {3, face[0], face[k], face[k + 1]});
    }

    kv_shared_ptr<CKVRenderBrepFaceData> data(new CKVRenderBrepFaceData);
    data->setPoints(mPoints);
    data->setNormals(mNormals);
    if (getGetRenderDataUV())
        data->setUV(mUV);
    data->setFacelist(std::move(triangles));
    return data;
}

} // namespace Kelvor
