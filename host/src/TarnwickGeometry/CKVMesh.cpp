#include "TarnwickGeometry/CKVMesh.h"

#include "KVShapeUtil.h"
#include "TarnwickGeometry/CKVRenderBrepFaceData.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS_DYNAMIC(CKVMesh, CKVGeometry)

namespace {

template <class T>
bool copyArray(std::vector<T>& target, T const* source, unsigned int count)
{
    if (count > 0 && !source)
        return false;
    target.assign(source, source + count);
    return true;
}

} // namespace

CKVMesh::CKVMesh() = default;

CKVMesh::~CKVMesh() = default;

bool CKVMesh::setPoint(CKVVec3<float> const* points, unsigned int count)
{
    return copyArray(mPoints, points, count);
}

bool CKVMesh::setNormal(CKVVec3<float> const* normals, unsigned int count)
{
    return copyArray(mNormals, normals, count);
}

bool CKVMesh::setUV(CKVVec2<float> const* uv, unsigned int count)
{
    return copyArray(mUV, uv, count);
}

bool CKVMesh::setTriangle(CKVVec3<unsigned int> const* triangles, unsigned int count)
{
    return copyArray(mTriangles, triangles, count);
}

CKVBndBox CKVMesh::bndBox() const
{
    return ShapeUtil::boxOf(mPoints);
}

bool CKVMesh::transformBy(CKVMatrix3D const& matrix)
{
    if (!ShapeUtil::isFinite(matrix))
        return false;
    ShapeUtil::transformPoints(mPoints, matrix);
    ShapeUtil::transformNormals(mNormals, ShapeUtil::normalMatrix(matrix));
    return true;
}

kv_shared_ptr<CKVRenderGeometryData> CKVMesh::getRenderData(CKVRenderGeometryData::SampleQuality) const
{
    size_t const numPoints = mPoints.size();
    std::vector<int> facelist;
    facelist.reserve(mTriangles.size() * 4);
    for (CKVVec3<unsigned int> const& t : mTriangles) {
        if (t.x >= numPoints || t.y >= numPoints || t.z >= numPoints)
            continue;
        facelist.insert(facelist.end(), {3, static_cast<int>(t.x), static_cast<int>(t.y), static_cast<int>(t.z)});
    }
    if (facelist.empty())
        return nullptr;

    kv_shared_ptr<CKVRenderBrepFaceData> data(new CKVRenderBrepFaceData);
    data->setPoints(mPoints);
    if (mNormals.size() == numPoints)
        data->setNormals(mNormals);
    if (getGetRenderDataUV() && mUV.size() == numPoints)
        data->setUV(mUV);
    data->setFacelist(std::move(facelist));
    return data;
}

} // namespace Kelvor
