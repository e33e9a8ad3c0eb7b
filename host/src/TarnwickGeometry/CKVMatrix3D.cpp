#include "TarnwickGeometry/CKVMatrix3D.h"

#include <cmath>

namespace Kelvor {

CKVMatrix3D& CKVMatrix3D::setToIdentity()
{
    for (int r = 0; r < 4; ++r) {
        for (int c = 0; c < 4; ++c)
            mData[r][c] = r == c ? 1.0 : 0.0;
    }
    return *this;
}

bool CKVMatrix3D::isIdentity(double tolerance) const
{
    return isEqualTo(CKVMatrix3D(), tolerance);
}

bool CKVMatrix3D::isEqualTo(CKVMatrix3D const& other, double tolerance) const
{
    for (int r = 0; r < 4; ++r) {
        for (int c = 0; c < 4; ++c) {
            if (!(std::fabs(mData[r][c] - other.mData[r][c]) <= tolerance))
                return false;
        }
    }
    return true;
}

CKVMatrix3D CKVMatrix3D::operator*(CKVMatrix3D const& other) const
{
    CKVMatrix3D result;
    for (int r = 0; r < 4; ++r) {
        for (int c = 0; c < 4; ++c) {
            double sum = 0.0;
            for (int k = 0; k < 4; ++k)
                sum += mData[r][k] * other.mData[k][c];
            result.mData[r][c] = sum;
        }
    }
    return result;
}

CKVMatrix3D& CKVMatrix3D::postMultBy(CKVMatrix3D const& other)
{
    *this = *this * other;
    return *this;
}

CKVMatrix3D& CKVMatrix3D::preMultBy(CKVMatrix3D const& other)
{
    *this = other * *this;
    return *this;
}

CKVMatrix3D CKVMatrix3D::transpose() const
{
    CKVMatrix3D result;
    for (int r = 0; r < 4; ++r) {
        for (int c = 0; c < 4; ++c)
            result.mData[r][c] = mData[c][r];
    }
    return result;
}

namespace {

// The 16 cofactors of m, laid out as the adjugate (transposed cofactors),
// from 2x2 sub-determinants of the top and bottom row pairs.
void adjugate(double const m[4][4], double adj[4][4], double& det)
{
    double const s0 = m[0][0] * m[1][1] - m[1][0] * m[0][1];
    double const s1 = m[0][0] * m[1][2] - m[1][0] * m[0][2];
    double const s2 = m[0][0] * m[1][3] - m[1][0] * m[0][3];
    double const s3 = m[0][1] * m[1][2] - m[1][1] * m[0][2];
    double const s4 = m[0][1] * m[1][3] - m[1][1] * m[0][3];
    double const s5 = m[0][2] * m[1][3] - m[1][2] * m[0][3];

    double const c5 = m[2][2] * m[3][3] - m[3][2] * m[2][3];
    double const c4 = m[2][1] * m[3][3] - m[3][1] * m[2][3];
    double const c3 = m[2][1] * m[3][2] - m[3][1] * m[2][2];
    double const c2 = m[2][0] * m[3][3] - m[3][0] * m[2][3];
    double const c1 = m[2][0] * m[3][2] - m[3][0] * m[2][2];
    double const c0 = m[2][0] * m[3][1] - m[3][0] * m[2][1];

    det = s0 * c5 - s1 * c4 + s2 * c3 + s3 * c2 - s4 * c1 + s5 * c0;

    adj[0][0] = m[1][1] * c5 - m[1][2] * c4 + m[1][3] * c3;
    adj[0][1] = -m[0][1] * c5 + m[0][2] * c4 - m[0][3] * c3;
    adj[0][2] = m[3][1] * s5 - m[3][2] * s4 + m[3][3] * s3;
    adj[0][3] = -m[2][1] * s5 + m[2][2] * s4 - m[2][3] * s3;

    adj[1][0] = -m[1][0] * c5 + m[1][2] * c2 - m[1][3] * c1;
    adj[1][1] = m[0][0] * c5 - m[0][2] * c2 + m[0][3] * c1;
    adj[1][2] = -m[3][0] * s5 + m[3][2] * s2 - m[3][3] * s1;
    adj[1][3] = m[2][0] * s5 - m[2][2] * s2 + m[2][3] * s1;

    adj[2][0] = m[1][0] * c4 - m[1][1] * c2 + m[1][3] * c0;
    adj[2][1] = -m[0][0] * c4 + m[0][1] * c2 - m[0][3] * c0;
    adj[2][2] = m[3][0] * s4 - m[3][1] * s2 + m[3][3] * s0;
    adj[2][3] = -m[2][0] * s4 + m[2][1] * s2 - m[2][3] * s0;

    adj[3][0] = -m[1][0] * c3 + m[1][1] * c1 - m[1][2] * c0;
    adj[3][1] = m[0][0] * c3 - m[0][1] * c1 + m[0][2] * c0;
    adj[3][2] = -m[3][0] * s3 + m[3][1] * s1 - m[3][2] * s0;
    adj[3][3] = m[2][0] * s3 - m[2][1] * s1 + m[2][2] * s0;
}

} // namespace

double CKVMatrix3D::det() const
{
    double adj[4][4];
    double d = 0.0;
    adjugate(mData, adj, d);
    return d;
}

bool CKVMatrix3D::inverse(CKVMatrix3D& out, double tolerance) const
{
    double adj[4][4];
    double d = 0.0;
    adjugate(mData, adj, d);
    if (!Math::isNormal(d) || std::fabs(d) <= tolerance)
        return false;
    double const invDet = 1.0 / d;
    for (int r = 0; r < 4; ++r) {
        for (int c = 0; c < 4; ++c)
            out.mData[r][c] = adj[r][c] * invDet;
    }
    return true;
}

bool CKVMatrix3D::invert(double tolerance)
{
    CKVMatrix3D result;
    if (!inverse(result, tolerance))
        return false;
    *this = result;
    return true;
}

CKVPoint3D CKVMatrix3D::transformPoint(CKVPoint3D const& p) const
{
    double const x = mData[0][0] * p.x + mData[0][1] * p.y + mData[0][2] * p.z + mData[0][3];
    double const y = mData[1][0] * p.x + mData[1][1] * p.y + mData[1][2] * p.z + mData[1][3];
    double const z = mData[2][0] * p.x + mData[2][1] * p.y + mData[2][2] * p.z + mData[2][3];
    double const w = mData[3][0] * p.x + mData[3][1] * p.y + mData[3][2] * p.z + mData[3][3];
    if (w == 1.0)
        return CKVPoint3D(x, y, z);
    return CKVPoint3D(x / w, y / w, z / w);
}

CKVVector3D CKVMatrix3D::transformVector(CKVVector3D const& v) const
{
    return CKVVector3D(mData[0][0] * v.x + mData[0][1] * v.y + mData[0][2] * v.z,
                       mData[1][0] * v.x + mData[1][1] * v.y + mData[1][2] * v.z,
                       mData[2][0] * v.x + mData[2][1] * v.y + mData[2][2] * v.z);
}

CKVMatrix3D& CKVMatrix3D::setTranslation(CKVVector3D const& t)
{
    mData[0][3] = t.x;
    mData[1][3] = t.y;
    mData[2][3] = t.z;
    return *this;
}

CKVVector3D CKVMatrix3D::getTranslation() const
{
    return CKVVector3D(mData[0][3], mData[1][3], mData[2][3]);
}

CKVMatrix3D& CKVMatrix3D::setCoordSystem(CKVVector3D const& xAxis, CKVVector3D const& yAxis,
                                         CKVVector3D const& zAxis, CKVPoint3D const& origin)
{
    CKVVector3D const columns[3] = {xAxis, yAxis, zAxis};
    for (int c = 0; c < 3; ++c) {
        mData[0][c] = columns[c].x;
        mData[1][c] = columns[c].y;
        mData[2][c] = columns[c].z;
        mData[3][c] = 0.0;
    }
    mData[0][3] = origin.x;
    mData[1][3] = origin.y;
    mData[2][3] = origin.z;
    mData[3][3] = 1.0;
    return *this;
}

void CKVMatrix3D::getCoordSystem(CKVVector3D& xAxis, CKVVector3D& yAxis, CKVVector3D& zAxis,
                                 CKVPoint3D& origin) const
{
    xAxis.set(mData[0][0], mData[1][0], mData[2][0]);
    yAxis.set(mData[0][1], mData[1][1], mData[2][1]);
    zAxis.set(mData[0][2], mData[1][2], mData[2][2]);
    origin.set(mData[0][3], mData[1][3], mData[2][3]);
}

CKVMatrix3D CKVMatrix3D::translation(CKVVector3D const& offset)
{
    CKVMatrix3D m;
    return m.setTranslation(offset);
}

CKVMatrix3D CKVMatrix3D::scaling(double sx, double sy, double sz)
{
    CKVMatrix3D m;
    m.mData[0][0] = sx;
    m.mData[1][1] = sy;
    m.mData[2][2] = sz;
    return m;
}

CKVMatrix3D CKVMatrix3D::rotation(double angle, CKVVector3D const& axis)
{
    CKVMatrix3D m;
    double const len = axis.length();
    if (len <= 0.0)
        return m;
    CKVVector3D const a = axis * (1.0 / len);
    double const c = std::cos(angle);
    double const s = std::sin(angle);
    double const t = 1.0 - c;
    m.mData[0][0] = t * a.x * a.x + c;
    m.mData[0][1] = t * a.x * a.y - s * a.z;
    m.mData[0][2] = t * a.x * a.z + s * a.y;
    m.mData[1][0] = t * a.x * a.y + s * a.z;
    m.mData[1][1] = t * a.y * a.y + c;
    m.mData[1][2] = t * a.y * a.z - s * a.x;
    m.mData[2][0] = t * a.x * a.z - s * a.y;
    m.mData[2][1] = t * a.y * a.z + s * a.x;
    m.mData[2][2] = t * a.z * a.z + c;
    return m;
}

CKVMatrix3D CKVMatrix3D::lookAt(CKVPoint3D const& eye, CKVPoint3D const& target, CKVVector3D const& up)
{
    CKVMatrix3D m;
    CKVVector3D forward = target - eye;
    CKVVector3D side = forward.crossProduct(up);
    if (forward.lengthSqrd() <= 0.0 || side.lengthSqrd() <= 0.0)
        return m;
    forward.normalize(0.0);
    side.normalize(0.0);
    CKVVector3D const trueUp = side.crossProduct(forward);
    CKVVector3D const e = eye.asVector();
    CKVVector3D const rows[3] = {side, trueUp, -forward};
    for (int r = 0; r < 3; ++r) {
        m.mData[r][0] = rows[r].x;
        m.mData[r][1] = rows[r].y;
        m.mData[r][2] = rows[r].z;
        m.mData[r][3] = -rows[r].dotProduct(e);
    }
    return m;
}

CKVMatrix3D CKVMatrix3D::perspective(double fovyDegrees, double aspect, double zNear, double zFar)
{
    double const halfHeight = std::tan(Math::degreesToRadians(fovyDegrees) * 0.5) * zNear;
    double const halfWidth = halfHeight * aspect;
    return frustum(-halfWidth, halfWidth, -halfHeight, halfHeight, zNear, zFar);
}

CKVMatrix3D CKVMatrix3D::frustum(double left, double right, double bottom, double top, double zNear, double zFar)
{
    CKVMatrix3D m;
    double const w = right - left;
    double const h = top - bottom;
    double const d = zFar - zNear;
    if (!Math::isNormal(w) || !Math::isNormal(h) || !Math::isNormal(d) || !Math::isNormal(zNear))
        return m;
    m.mData[0][0] = 2.0 * zNear / w;
    m.mData[0][2] = (right + left) / w;
    m.mData[1][1] = 2.0 * zNear / h;
    m.mData[1][2] = (top + bottom) / h;
    m.mData[2][2] = -(zFar + zNear) / d;
    m.mData[2][3] = -2.0 * zFar * zNear / d;
    m.mData[3][2] = -1.0;
    m.mData[3][3] = 0.0;
    return m;
}

CKVMatrix3D CKVMatrix3D::ortho(double left, double right, double bottom, double top, double zNear, double zFar)
{
    CKVMatrix3D m;
    double const w = right - left;
    double const h = top - bottom;
    double const d = zFar - zNear;
    if (!Math::isNormal(w) || !Math::isNormal(h) || !Math::isNormal(d))
        return m;
    m.mData[0][0] = 2.0 / w;
    m.mData[0][3] = -(right + left) / w;
    m.mData[1][1] = 2.0 / h;
    m.mData[1][3] = -(top + bottom) / h;
    m.mData[2][2] = -2.0 / d;
    m.mData[2][3] = -(zFar + zNear) / d;
    return m;
}

} // namespace Kelvor
