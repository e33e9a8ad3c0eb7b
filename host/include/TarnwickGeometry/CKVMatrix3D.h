#pragma once

#include "TarnwickGeometry/CKVPoint3D.h"
#include "TarnwickGeometry/CKVVector3D.h"
#include "TarnwickGeometry/KVMath.h"

namespace Kelvor {

// A 4x4 double matrix for column vectors: a point p maps to M * p, so the
// translation sits in column 3 (elements (0,3), (1,3), (2,3)) and the
// product A * B applies B first. Addressed as m(row, col). The default is
// the identity.
//
// Camera builders produce OpenGL-convention matrices: the view looks down
// its -z axis, and the projections map the view volume to clip space with
// NDC z in [-1, 1]. Degenerate input (zero width, height or depth range,
// coinciding eye and target) gives the identity; callers validate first.
class CKVMatrix3D
{
public:
    CKVMatrix3D() { setToIdentity(); }
    CKVMatrix3D(CKVMatrix3D const& other) = default;
    CKVMatrix3D& operator=(CKVMatrix3D const& other) = default;
    ~CKVMatrix3D() = default;

    double& operator()(int row, int col) { return mData[row][col]; }
    double operator()(int row, int col) const { return mData[row][col]; }

    CKVMatrix3D& setToIdentity();
    bool isIdentity(double tolerance = 0.0) const;
    bool isEqualTo(CKVMatrix3D const& other, double tolerance = Math::kTolerance) const;

    // The product applies `other` first: (A * B) p = A (B p).
    CKVMatrix3D operator*(CKVMatrix3D const& other) const;
    // this = this * other.
    CKVMatrix3D& postMultBy(CKVMatrix3D const& other);
    // this = other * this.
    CKVMatrix3D& preMultBy(CKVMatrix3D const& other);

    CKVMatrix3D transpose() const;
    double det() const;
    // Writes the inverse to `out`; false, with `out` untouched, when the
    // determinant is zero within `tolerance` or not a normal number.
    bool inverse(CKVMatrix3D& out, double tolerance = 0.0) const;
    // Inverts in place; false, leaving the matrix as it was, when singular.
    bool invert(double tolerance = 0.0);

    // Includes the perspective divide when the bottom row is not (0, 0, 0, 1);
    // a point mapped to w = 0 comes out with infinite coordinates.
    CKVPoint3D transformPoint(CKVPoint3D const& point) const;
    // Upper 3x3 only: directions ignore translation.
    CKVVector3D transformVector(CKVVector3D const& vector) const;

    // Column 3; the rest of the matrix is unchanged.
    CKVMatrix3D& setTranslation(CKVVector3D const& translation);
    CKVVector3D getTranslation() const;

    // Sets the whole matrix: the axes become columns 0, 1, 2 and the origin
    // column 3, so local (1, 0, 0) maps to origin + xAxis. The axes are used
    // as given (not normalised).
    CKVMatrix3D& setCoordSystem(CKVVector3D const& xAxis, CKVVector3D const& yAxis, CKVVector3D const& zAxis,
                                CKVPoint3D const& origin);
    void getCoordSystem(CKVVector3D& xAxis, CKVVector3D& yAxis, CKVVector3D& zAxis, CKVPoint3D& origin) const;

    static CKVMatrix3D translation(CKVVector3D const& offset);
    static CKVMatrix3D scaling(double sx, double sy, double sz);
    // Right-handed rotation by `angle` radians about `axis` through the
    // origin. A zero axis gives the identity.
    static CKVMatrix3D rotation(double angle, CKVVector3D const& axis);

    // World to view: the eye at the origin looking down -z with `up` along +y.
    // The identity when eye and target coincide or up is parallel to the
    // line of sight.
    static CKVMatrix3D lookAt(CKVPoint3D const& eye, CKVPoint3D const& target, CKVVector3D const& up);
    // Symmetric perspective projection; fovy is the full vertical angle in
    // degrees. Depth maps near to -1 and far to +1; near must be above 0.
    static CKVMatrix3D perspective(double fovyDegrees, double aspect, double zNear, double zFar);
    static CKVMatrix3D frustum(double left, double right, double bottom, double top, double zNear, double zFar);
    static CKVMatrix3D ortho(double left, double right, double bottom, double top, double zNear, double zFar);

private:
    double mData[4][4];
};

} // namespace Kelvor
