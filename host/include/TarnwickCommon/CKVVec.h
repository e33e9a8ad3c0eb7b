#pragma once

namespace Kelvor {

// Plain numeric tuples: adjacent members, no virtual functions, so that an
// array of them can be handed to GL or copied as raw memory. Used with
// float, int and unsigned int. A CKVVec4<float> clip plane is (a, b, c, d)
// with a x + b y + c z + d = 0.

template <class T>
struct CKVVec2
{
    T x, y;

    constexpr CKVVec2() : x(T()), y(T()) {}
    constexpr CKVVec2(T x_, T y_) : x(x_), y(y_) {}

    friend constexpr bool operator==(CKVVec2 const& a, CKVVec2 const& b) { return a.x == b.x && a.y == b.y; }
    friend constexpr bool operator!=(CKVVec2 const& a, CKVVec2 const& b) { return !(a == b); }
};

template <class T>
struct CKVVec3
{
    T x, y, z;

    constexpr CKVVec3() : x(T()), y(T()), z(T()) {}
    constexpr CKVVec3(T x_, T y_, T z_) : x(x_), y(y_), z(z_) {}

    friend constexpr bool operator==(CKVVec3 const& a, CKVVec3 const& b)
    {
        return a.x == b.x && a.y == b.y && a.z == b.z;
    }
    friend constexpr bool operator!=(CKVVec3 const& a, CKVVec3 const& b) { return !(a == b); }
};

template <class T>
struct CKVVec4
{
    T x, y, z, w;

    constexpr CKVVec4() : x(T()), y(T()), z(T()), w(T()) {}
    constexpr CKVVec4(T x_, T y_, T z_, T w_) : x(x_), y(y_), z(z_), w(w_) {}

    friend constexpr bool operator==(CKVVec4 const& a, CKVVec4 const& b)
    {
        return a.x == b.x && a.y == b.y && a.z == b.z && a.w == b.w;
    }
    friend constexpr bool operator!=(CKVVec4 const& a, CKVVec4 const& b) { return !(a == b); }
};

} // namespace Kelvor
