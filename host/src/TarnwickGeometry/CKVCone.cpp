#include "TarnwickGeometry/CKVCone.h"

#include "KVShapeUtil.h"

#include <cmath>

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS_DYNAMIC(CKVCone, CKVGeometry)

CKVCone::CKVCone() = default;

CKVCone::~CKVCone() = default;

CKVBndBox CKVCone::bndBox() const
{
    kv_shared_ptr<CKVRenderGeometryData> data = getRenderData(CKVRenderGeometryData::kSampleNormal);
    return data ? data->bndBox() : CKVBndBox();
}

bool CKVCone::transformBy(CKVMatrix3D const& matrix)
{
    if (!ShapeUtil::isFinite(matrix))
        return false;
    mTransform.preMultBy(matrix);
    return true;
}

kv_shared_ptr<CKVRenderGeometryData> CKVCone::getRenderData(CKVRenderGeometryData::SampleQuality quality) const
{
    double const height = mMajorVector.length();
    if (!(height > 0.0) || !(mRadius > 0.0))
        return nullptr;

    unsigned int const n = getSegmentCount(quality);
    CKVVector3D const axis = mMajorVector * (1.0 / height);
    CKVVector3D u, v;
    ShapeUtil::circleBasis(axis, u, v);
    CKVPoint3D const apex = mBottomCenter + mMajorVector;
    auto radial = [&](double angle) { return u * std::cos(angle) + v * std::sin(angle); };
    auto angleOf = [n](double i) { return 2.0 * Math::kPi * i / n; };
    // Perpendicular to both the slant line and the circle's tangent.
    auto sideNormal = [&](double angle) { return (radial(angle) * height + axis * mRadius).normalize(0.0); };

    std::vector<CKVPoint3D> points;
    std::vector<CKVVector3D> normals;
    std::vector<CKVVec2<float>> uv;
    std::vector<int> faces;

    // Side ring, seam repeated (i = n sits on i = 0) so the texture wraps once.
    unsigned int const ring = 0;
    for (unsigned int i = 0; i <= n; ++i) {
        double const a = angleOf(i % n);
        points.push_back(mBottomCenter + radial(a) * mRadius);
        normals.push_back(sideNormal(a));
        uv.emplace_back(static_cast<float>(i) / n, 0.0f);
    }
    // One apex point per segment: a shared apex would need one normal for
    // every direction around it.
    unsigned int const apexes = static_cast<unsigned int>(points.size());
    for (unsigned int i = 0; i < n; ++i) {
        points.push_back(apex);
        normals.push_back(sideNormal(angleOf(i + 0.5)));
        uv.emplace_back((i + 0.5f) / n, 1.0f);
    }
    for (unsigned int i = 0; i < n; ++i)
        faces.insert(faces.end(), {3, int(ring + i), int(ring + i + 1), int(apexes + i)});

    // Base disc, facing away from the apex.
    unsigned int const center = static_cast<unsigned int>(points.size());
    points.push_back(mBottomCenter);
    normals.push_back(-axis);
    uv.emplace_back(0.5f, 0.5f);
    for (unsigned int i = 0; i < n; ++i) {
        double const a = angleOf(i);
        points.push_back(mBottomCenter + radial(a) * mRadius);
        normals.push_back(-axis);
        uv.emplace_back(static_cast<float>(0.5 + 0.5 * std::cos(a)), static_cast<float>(0.5 + 0.5 * std::sin(a)));
    }
    for (unsigned int i = 0; i < n; ++i)
        faces.insert(faces.end(), {3, int(center), int(center + 1 + (i + 1) % n), int(center + 1 + i)});

    if (!getGetRenderDataUV())
        uv.clear();
    return ShapeUtil::makePlacedFaceData(points, normals, std::move(uv), std::move(faces), mTransform);
}

} // namespace Kelvor
