#include "TarnwickGeometry/CKVRay3D.h"

#include <cmath>

namespace Kelvor {

bool CKVRay3D::hitPlane(CKVPlane const& plane, CKVPoint3D& out, double tolerance) const
{
    if (!plane.isValid())
        return false;
    double const len = mDirection.length();
    if (len <= 0.0 || len <= tolerance)
        return false;
    double const along = mDirection.dotProduct(plane.getNormal());
    if (std::fabs(along) / len <= tolerance)
        return false;
    double const t = -plane.signedDistanceTo(mOrigin) / along;
    // A point on the plane within tolerance counts as hit at the origin.
    if (t * len < -tolerance)
        return false;
    out = t > 0.0 ? pointAt(t) : mOrigin;
    return true;
}

} // namespace Kelvor
