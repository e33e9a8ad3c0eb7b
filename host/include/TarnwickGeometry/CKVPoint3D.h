#pragma once

#include "TarnwickGeometry/CKVVector3D.h"
#include "TarnwickGeometry/KVMath.h"

namespace Kelvor {

class CKVPlane;

// A double-precision position. x, y, z are public and adjacent, read
// directly by callers.
class CKVPoint3D
{
public:
    double x, y, z;

    constexpr CKVPoint3D() : x(0.0), y(0.0), z(0.0) {}
    constexpr CKVPoint3D(double const& x_, double const& y_, double const& z_) : x(x_), y(y_), z(z_) {}
    ~CKVPoint3D() = default;

    CKVPoint3D& set(double x_, double y_, double z_)
    {
        x = x_;
        y = y_;
        z = z_;
        return *this;
    }

    CKVPoint3D operator+(CKVVector3D const& v) const { return CKVPoint3D(x + v.x, y + v.y, z + v.z); }
    CKVPoint3D operator-(CKVVector3D const& v) const { return CKVPoint3D(x - v.x, y - v.y, z - v.z); }
    CKVVector3D operator-(CKVPoint3D const& p) const { return CKVVector3D(x - p.x, y - p.y, z - p.z); }
    CKVPoint3D& operator+=(CKVVector3D const& v) { return set(x + v.x, y + v.y, z + v.z); }
    CKVPoint3D& operator-=(CKVVector3D const& v) { return set(x - v.x, y - v.y, z - v.z); }

    // The vector from the origin to this point.
    CKVVector3D asVector() const { return CKVVector3D(x, y, z); }

    double distanceTo(CKVPoint3D const& p) const;
    // Distance to the plane. With `absolute` false the result is signed:
    // positive on the side the plane's normal points to.
    double distanceTo(CKVPlane const& plane, bool absolute = true) const;

    // Moves this point along `direction` until it meets `plane`; the result
    // goes to `out`. False, with `out` untouched, when the direction has zero
    // length or lies in the plane (|cos| between direction and normal not
    // above `tolerance`).
    bool projectTo(CKVPlane const& plane, CKVVector3D const& direction, CKVPoint3D& out,
                   double tolerance = Math::kTolerance) const;
    // The foot of the perpendicular from this point on `plane`.
    CKVPoint3D orthoProjectTo(CKVPlane const& plane) const;

    bool isEqualTo(CKVPoint3D const& p, double tolerance = Math::kTolerance) const;
    // Exact comparison; use isEqualTo for computed values.
    bool operator==(CKVPoint3D const& p) const { return x == p.x && y == p.y && z == p.z; }
    bool operator!=(CKVPoint3D const& p) const { return !(*this == p); }

    static CKVPoint3D const kOrigin;
};

} // namespace Kelvor
