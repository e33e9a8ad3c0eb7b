#pragma once

#include "TarnwickGeometry/CKVPoint3D.h"
#include "TarnwickGeometry/CKVVector3D.h"

namespace Kelvor {

// A plane through a point with a unit normal. The default plane is z = 0
// with normal +z. A zero normal is kept as given and makes the plane
// invalid; every query on an invalid plane reports failure or 0.
class CKVPlane
{
public:
    CKVPlane() : mNormal(CKVVector3D::kZAxis) {}
    CKVPlane(CKVPoint3D const& point, CKVVector3D const& normal) { set(point, normal); }
    ~CKVPlane() = default;

    // The normal is normalised.
    CKVPlane& set(CKVPoint3D const& point, CKVVector3D const& normal);

    CKVPoint3D const& getOrigin() const { return mOrigin; }
    CKVVector3D const& getNormal() const { return mNormal; }
    bool isValid() const { return !mNormal.isZeroLength(); }

    // Signed distance, positive on the side the normal points to.
    double signedDistanceTo(CKVPoint3D const& point) const;
    // (a, b, c, d) with a x + b y + c z + d = 0 and (a, b, c) the unit normal.
    void getCoefficients(double& a, double& b, double& c, double& d) const;

private:
    CKVPoint3D mOrigin;
    CKVVector3D mNormal;
};

} // namespace Kelvor
