#include "TarnwickGeometry/CKVPoint3D.h"

#include "TarnwickGeometry/CKVPlane.h"

#include <cmath>

namespace Kelvor {

CKVPoint3D const CKVPoint3D::kOrigin(0.0, 0.0, 0.0);

double CKVPoint3D::distanceTo(CKVPoint3D const& p) const
{
    return (*this - p).length();
}

double CKVPoint3D::distanceTo(CKVPlane const& plane, bool absolute) const
{
    double const d = plane.signedDistanceTo(*this);
    return absolute ? std::fabs(d) : d;
}

bool CKVPoint3D::projectTo(CKVPlane const& plane, CKVVector3D const& direction, CKVPoint3D& out,
                           double tolerance) const
{
    if (!plane.isValid())
        return false;
    double const len = direction.length();
    if (len <= 0.0 || len <= tolerance)
        return false;
    CKVVector3D const unit = direction * (1.0 / len);
    double const cosine = unit.dotProduct(plane.getNormal());
    if (std::fabs(cosine) <= tolerance)
        return false;
    // Move along the unit direction by the signed distance over the cosine.
    double const t = -plane.signedDistanceTo(*this) / cosine;
    out = *this + unit * t;
    return true;
}

CKVPoint3D CKVPoint3D::orthoProjectTo(CKVPlane const& plane) const
{
    if (!plane.isValid())
        return *this;
    return *this - plane.getNormal() * plane.signedDistanceTo(*this);
}

bool CKVPoint3D::isEqualTo(CKVPoint3D const& p, double tolerance) const
{
    return distanceTo(p) <= tolerance;
}

} // namespace Kelvor
