#pragma once

#include "TarnwickGeometry/KVMath.h"

namespace Kelvor {

// A double-precision direction or displacement. x, y, z are public and
// adjacent, read directly by callers.
class CKVVector3D
{
public:
    double x, y, z;

    constexpr CKVVector3D() : x(0.0), y(0.0), z(0.0) {}
    constexpr CKVVector3D(double const& x_, double const& y_, double const& z_) : x(x_), y(y_), z(z_) {}
    ~CKVVector3D() = default;

    CKVVector3D& set(double x_, double y_, double z_)
    {
        x = x_;
        y = y_;
        z = z_;
        return *this;
    }

    double length() const;
    double lengthSqrd() const { return x * x + y * y + z * z; }
    bool isZeroLength(double tolerance = Math::kTolerance) const;

    // Scales to unit length. A vector not longer than `tolerance` is left as
    // it is, so callers test isZeroLength when that matters.
    CKVVector3D& normalize(double tolerance = Math::kTolerance);
    // A unit copy, or an unchanged copy when not longer than `tolerance`.
    CKVVector3D normal(double tolerance = Math::kTolerance) const;

    double dotProduct(CKVVector3D const& v) const { return x * v.x + y * v.y + z * v.z; }
    CKVVector3D crossProduct(CKVVector3D const& v) const
    {
        return CKVVector3D(y * v.z - z * v.y, z * v.x - x * v.z, x * v.y - y * v.x);
    }
    // Angle in radians in [0, pi]; 0 when either vector has zero length.
    double angleTo(CKVVector3D const& v) const;
    // True when the two directions are parallel or opposite within `tolerance`
    // (compared on the sine of the angle between them).
    bool isParallelTo(CKVVector3D const& v, double tolerance = Math::kTolerance) const;
    bool isEqualTo(CKVVector3D const& v, double tolerance = Math::kTolerance) const;

    CKVVector3D operator+(CKVVector3D const& v) const { return CKVVector3D(x + v.x, y + v.y, z + v.z); }
    CKVVector3D operator-(CKVVector3D const& v) const { return CKVVector3D(x - v.x, y - v.y, z - v.z); }
    CKVVector3D operator-() const { return CKVVector3D(-x, -y, -z); }
    CKVVector3D operator*(double s) const { return CKVVector3D(x * s, y * s, z * s); }
    CKVVector3D operator/(double s) const { return CKVVector3D(x / s, y / s, z / s); }
    CKVVector3D& operator+=(CKVVector3D const& v) { return set(x + v.x, y + v.y, z + v.z); }
    CKVVector3D& operator-=(CKVVector3D const& v) { return set(x - v.x, y - v.y, z - v.z); }
    CKVVector3D& operator*=(double s) { return set(x * s, y * s, z * s); }

    // Exact comparison; use isEqualTo for computed values.
    bool operator==(CKVVector3D const& v) const { return x == v.x && y == v.y && z == v.z; }
    bool operator!=(CKVVector3D const& v) const { return !(*this == v); }

    static CKVVector3D const kXAxis;
    static CKVVector3D const kYAxis;
    static CKVVector3D const kZAxis;
};

inline CKVVector3D operator*(double s, CKVVector3D const& v)
{
    return v * s;
}

} // namespace Kelvor
