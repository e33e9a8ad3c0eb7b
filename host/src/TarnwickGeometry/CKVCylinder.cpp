#include "TarnwickGeometry/CKVCylinder.h"

#include "KVShapeUtil.h"

#include <cmath>

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS_DYNAMIC(CKVCylinder, CKVGeometry)

CKVCylinder::CKVCylinder() = default;

CKVCylinder::~CKVCylinder() = default;

CKVBndBox CKVCylinder::bndBox() const
{
    kv_shared_ptr<CKVRenderGeometryData> data = getRenderData(CKVRenderGeometryData::kSampleNormal);
    return data ? data->bndBox() : CKVBndBox();
}

bool CKVCylinder::transformBy(CKVMatrix3D const& matrix)
{
    if (!ShapeUtil::isFinite(matrix))
        return false;
    mTransform.preMultBy(matrix);
    return true;
}

kv_shared_ptr<CKVRenderGeometryData>
CKVCylinder::getRenderData(CKVRenderGeometryData::SampleQuality quality) const
{
    CKVVector3D const along = mTop - mBottom;
    double const height = along.length();
    if (!(height > 0.0) || !(mRadius > 0.0))
        return nullptr;

    unsigned int const n = getSegmentCount(quality);
    CKVVector3D const axis = along * (1.0 / height);
    CKVVector3D u, v;
    ShapeUtil::circleBasis(axis, u, v);
    auto radial = [&](unsigned int i) {
        double const a = 2.0 * Math::kPi * (i % n) / n;
        return u * std::cos(a) + v * std::sin(a);
    };

    std::vector<CKVPoint3D> points;
    std::vector<CKVVector3D> normals;
    std::vector<CKVVec2<float>> uv;
    std::vector<int> faces;

    // Side: bottom ring then top ring, seam repeated so the texture wraps once.
    unsigned int const bottom = 0;
    unsigned int const top = n + 1;
    for (int side = 0; side < 2; ++side) {
        CKVPoint3D const& end = side == 0 ? mBottom : mTop;
        for (unsigned int i = 0; i <= n; ++i) {
            points.push_back(end + radial(i) * mRadius);
            normals.push_back(radial(i));
            uv.emplace_back(static_cast<float>(i) / n, static_cast<float>(side));
        }
    }
    for (unsigned int i = 0; i < n; ++i) {
        faces.insert(faces.end(), {3, int(bottom + i), int(bottom + i + 1), int(top + i + 1)});
        faces.insert(faces.end(), {3, int(bottom + i), int(top + i + 1), int(top + i)});
    }

    // Caps: a centre and a ring each, the bottom facing down the axis.
    for (int side = 0; side < 2; ++side) {
        CKVPoint3D const& centerPoint = side == 0 ? mBottom : mTop;
        CKVVector3D const normal = side == 0 ? -axis : axis;
        unsigned int const center = static_cast<unsigned int>(points.size());
        points.push_back(centerPoint);
        normals.push_back(normal);
        uv.emplace_back(0.5f, 0.5f);
        for (unsigned int i = 0; i < n; ++i) {
            CKVVector3D const r = radial(i);
            points.push_back(centerPoint + r * mRadius);
            normals.push_back(normal);
            double const a = 2.0 * Math::kPi * i / n;
            uv.emplace_back(static_cast<float>(0.5 + 0.5 * std::cos(a)), static_cast<float>(0.5 + 0.5 * std::sin(a)));
        }
        for (unsigned int i = 0; i < n; ++i) {
            int const here = int(center + 1 + i);
            int const next = int(center + 1 + (i + 1) % n);
            if (side == 0)
                faces.insert(faces.end(), {3, int(center), next, here});
            else
                faces.insert(faces.end(), {3, int(center), here, next});
        }
    }

    if (!getGetRenderDataUV())
        uv.clear();
    return ShapeUtil::makePlacedFaceData(points, normals, std::move(uv), std::move(faces), mTransform);
}

} // namespace Kelvor
