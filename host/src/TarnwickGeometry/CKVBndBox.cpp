#include "TarnwickGeometry/CKVBndBox.h"

#include "TarnwickGeometry/CKVMatrix3D.h"

#include <algorithm>
#include <limits>

namespace Kelvor {

namespace {

double const kHuge = std::numeric_limits<double>::max();

} // namespace

CKVBndBox::CKVBndBox()
{
    reset();
}

CKVBndBox::CKVBndBox(CKVPoint3D const& a, CKVPoint3D const& b)
{
    reset();
    addPoint(a);
    addPoint(b);
}

void CKVBndBox::reset()
{
    // Inverted extremes: the first point added becomes both corners.
    mMin.set(kHuge, kHuge, kHuge);
    mMax.set(-kHuge, -kHuge, -kHuge);
}

CKVBndBox& CKVBndBox::addPoint(CKVPoint3D const& p)
{
    mMin.set(std::min(mMin.x, p.x), std::min(mMin.y, p.y), std::min(mMin.z, p.z));
    mMax.set(std::max(mMax.x, p.x), std::max(mMax.y, p.y), std::max(mMax.z, p.z));
    return *this;
}

CKVBndBox& CKVBndBox::addBndBox(CKVBndBox const& box)
{
    if (box.valid()) {
        addPoint(box.mMin);
        addPoint(box.mMax);
    }
    return *this;
}

CKVPoint3D CKVBndBox::midPt() const
{
    return CKVPoint3D((mMin.x + mMax.x) * 0.5, (mMin.y + mMax.y) * 0.5, (mMin.z + mMax.z) * 0.5);
}

CKVPoint3D CKVBndBox::corner(unsigned int index) const
{
    return CKVPoint3D(index & 1u ? mMax.x : mMin.x, index & 2u ? mMax.y : mMin.y, index & 4u ? mMax.z : mMin.z);
}

bool CKVBndBox::contains(CKVPoint3D const& p, double tolerance) const
{
    if (!valid())
        return false;
    return p.x >= mMin.x - tolerance && p.x <= mMax.x + tolerance && p.y >= mMin.y - tolerance &&
           p.y <= mMax.y + tolerance && p.z >= mMin.z - tolerance && p.z <= mMax.z + tolerance;
}

bool CKVBndBox::intersects(CKVBndBox const& other) const
{
    if (!valid() || !other.valid())
        return false;
    return mMin.x <= other.mMax.x && other.mMin.x <= mMax.x && mMin.y <= other.mMax.y &&
           other.mMin.y <= mMax.y && mMin.z <= other.mMax.z && other.mMin.z <= mMax.z;
}

CKVBndBox& CKVBndBox::transformBy(CKVMatrix3D const& matrix)
{
    if (!valid())
        return *this;
    CKVBndBox result;
    for (unsigned int i = 0; i < 8; ++i)
        result.addPoint(matrix.transformPoint(corner(i)));
    *this = result;
    return *this;
}

} // namespace Kelvor
