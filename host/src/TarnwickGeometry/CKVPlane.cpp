#include "TarnwickGeometry/CKVPlane.h"

namespace Kelvor {

CKVPlane& CKVPlane::set(CKVPoint3D const& point, CKVVector3D const& normal)
{
    mOrigin = point;
    mNormal = normal.normal(0.0);
    return *this;
}

double CKVPlane::signedDistanceTo(CKVPoint3D const& point) const
{
    if (!isValid())
        return 0.0;
    return (point - mOrigin).dotProduct(mNormal);
}

void CKVPlane::getCoefficients(double& a, double& b, double& c, double& d) const
{
    a = mNormal.x;
    b = mNormal.y;
    c = mNormal.z;
    d = -mNormal.dotProduct(mOrigin.asVector());
}

} // namespace Kelvor
