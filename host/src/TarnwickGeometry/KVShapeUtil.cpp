#include "KVShapeUtil.h"

#include "TarnwickGeometry/CKVRenderBrepFaceData.h"

#include <cmath>

namespace Kelvor {
namespace ShapeUtil {

bool isFinite(CKVMatrix3D const& m)
{
    for (int r = 0; r < 4; ++r) {
        for (int c = 0; c < 4; ++c) {
            if (!std::isfinite(m(r, c)))
                return false;
        }
    }
    return true;
}

CKVMatrix3D normalMatrix(CKVMatrix3D const& m)
{
    CKVVector3D a0, a1, a2;
    CKVPoint3D origin;
    m.getCoordSystem(a0, a1, a2, origin);
    // Columns of det(A) * A^-T are the cross products of A's columns.
    CKVMatrix3D result;
    result.setCoordSystem(a1.crossProduct(a2), a2.crossProduct(a0), a0.crossProduct(a1), CKVPoint3D::kOrigin);
    return result;
}

void transformPoints(std::vector<CKVVec3<float>>& points, CKVMatrix3D const& matrix)
{
    for (CKVVec3<float>& p : points)
        p = toFloat(matrix.transformPoint(CKVPoint3D(p.x, p.y, p.z)));
}

void transformNormals(std::vector<CKVVec3<float>>& normals, CKVMatrix3D const& normalMatrix)
{
    for (CKVVec3<float>& n : normals)
        n = toFloat(normalMatrix.transformVector(CKVVector3D(n.x, n.y, n.z)).normalize(0.0));
}

CKVBndBox boxOf(std::vector<CKVVec3<float>> const& points)
{
    CKVBndBox box;
    for (CKVVec3<float> const& p : points)
        box.addPoint(CKVPoint3D(p.x, p.y, p.z));
    return box;
}

CKVVec3<float> toFloat(CKVPoint3D const& p)
{
    return CKVVec3<float>(static_cast<float>(p.x), static_cast<float>(p.y), static_cast<float>(p.z));
}

CKVVec3<float> toFloat(CKVVector3D const& v)
{
    return CKVVec3<float>(static_cast<float>(v.x), static_cast<float>(v.y), static_cast<float>(v.z));
}

void circleBasis(CKVVector3D const& axis, CKVVector3D& u, CKVVector3D& v)
{
    CKVVector3D const candidates[3] = {CKVVector3D::kXAxis, CKVVector3D::kYAxis, CKVVector3D::kZAxis};
    int best = 0;
    for (int i = 1; i < 3; ++i) {
        if (std::fabs(candidates[i].dotProduct(axis)) < std::fabs(candidates[best].dotProduct(axis)))
            best = i;
    }
    u = (candidates[best] - axis * candidates[best].dotProduct(axis)).normalize(0.0);
    v = axis.crossProduct(u);
}

kv_shared_ptr<CKVRenderGeometryData> makePlacedFaceData(std::vector<CKVPoint3D> const& points,
                                                        std::vector<CKVVector3D> const& normals,
                                                        std::vector<CKVVec2<float>> uv, std::vector<int> faces,
                                                        CKVMatrix3D const& transform)
{
    CKVMatrix3D const toNormals = normalMatrix(transform);
    std::vector<CKVVec3<float>> placedPoints;
    std::vector<CKVVec3<float>> placedNormals;
    placedPoints.reserve(points.size());
    placedNormals.reserve(normals.size());
    for (CKVPoint3D const& p : points)
        placedPoints.push_back(toFloat(transform.transformPoint(p)));
    for (CKVVector3D const& n : normals)
        placedNormals.push_back(toFloat(toNormals.transformVector(n).normalize(0.0)));

    kv_shared_ptr<CKVRenderBrepFaceData> data(new CKVRenderBrepFaceData);
    data->setPoints(std::move(placedPoints));
    data->setNormals(std::move(placedNormals));
    data->setUV(std::move(uv));
    if (!data->setFacelist(std::move(faces)))
        return nullptr;
    return data;
}

} // namespace ShapeUtil
} // namespace Kelvor
