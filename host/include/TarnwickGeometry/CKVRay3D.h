#pragma once

#include "TarnwickGeometry/CKVPlane.h"
#include "TarnwickGeometry/CKVPoint3D.h"
#include "TarnwickGeometry/CKVVector3D.h"

namespace Kelvor {

// A half-line from an origin along a direction. The default ray starts at
// the origin and points along +z. The direction is kept as given (not
// normalised), so origin() + t * direction() is the point at parameter t.
class CKVRay3D
{
public:
    CKVRay3D() : mDirection(CKVVector3D::kZAxis) {}
    CKVRay3D(CKVPoint3D const& origin, CKVVector3D const& direction) : mOrigin(origin), mDirection(direction) {}
    ~CKVRay3D() = default;

    CKVRay3D& set(CKVPoint3D const& origin, CKVVector3D const& direction)
    {
        mOrigin = origin;
        mDirection = direction;
        return *this;
    }

    CKVPoint3D const& origin() const { return mOrigin; }
    CKVVector3D const& direction() const { return mDirection; }
    CKVPoint3D pointAt(double t) const { return mOrigin + mDirection * t; }

    // Where the ray meets `plane`; false, with `out` untouched, when the
    // direction has zero length, lies in the plane (|cos| to the normal not
    // above `tolerance`), the plane is invalid, or the plane lies behind the
    // origin.
    bool hitPlane(CKVPlane const& plane, CKVPoint3D& out, double tolerance = Math::kTolerance) const;

private:
    CKVPoint3D mOrigin;
    CKVVector3D mDirection;
};

} // namespace Kelvor
