#pragma once

namespace Kelvor {

// A double-precision 2D position or direction; x and y are read directly.
class CKVPoint2D
{
public:
    double x, y;

    constexpr CKVPoint2D() : x(0.0), y(0.0) {}
    constexpr CKVPoint2D(double const& x_, double const& y_) : x(x_), y(y_) {}
    ~CKVPoint2D() = default;

    CKVPoint2D& set(double x_, double y_)
    {
        x = x_;
        y = y_;
        return *this;
    }

    bool operator==(CKVPoint2D const& p) const { return x == p.x && y == p.y; }
    bool operator!=(CKVPoint2D const& p) const { return !(*this == p); }
};

} // namespace Kelvor
