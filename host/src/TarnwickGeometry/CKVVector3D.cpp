#include "TarnwickGeometry/CKVVector3D.h"

#include <algorithm>
#include <cmath>

namespace Kelvor {

// constexpr constructors: these are constant-initialised, so other
// libraries' static initialisers can use them.
CKVVector3D const CKVVector3D::kXAxis(1.0, 0.0, 0.0);
CKVVector3D const CKVVector3D::kYAxis(0.0, 1.0, 0.0);
CKVVector3D const CKVVector3D::kZAxis(0.0, 0.0, 1.0);

double CKVVector3D::length() const
{
    return std::sqrt(lengthSqrd());
}

bool CKVVector3D::isZeroLength(double tolerance) const
{
    return length() <= tolerance;
}

CKVVector3D& CKVVector3D::normalize(double tolerance)
{
    double const len = length();
    if (len > tolerance && len > 0.0)
        *this *= 1.0 / len;
    return *this;
}

CKVVector3D CKVVector3D::normal(double tolerance) const
{
    CKVVector3D copy(*this);
    return copy.normalize(tolerance);
}

double CKVVector3D::angleTo(CKVVector3D const& v) const
{
    double const lengths = length() * v.length();
    if (lengths <= 0.0)
        return 0.0;
    // atan2 of |cross| and dot stays accurate near 0 and pi, where acos does not.
    return std::atan2(crossProduct(v).length(), dotProduct(v));
}

bool CKVVector3D::isParallelTo(CKVVector3D const& v, double tolerance) const
{
    double const lengths = length() * v.length();
    if (lengths <= 0.0)
        return false;
    return crossProduct(v).length() / lengths <= tolerance;
}

bool CKVVector3D::isEqualTo(CKVVector3D const& v, double tolerance) const
{
    return (*this - v).length() <= tolerance;
}

} // namespace Kelvor
