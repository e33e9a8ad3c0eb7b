#pragma once

#include "TarnwickGeometry/CKVPoint3D.h"
#include "TarnwickGeometry/CKVVector3D.h"

namespace Kelvor {

class CKVMatrix3D;

// An axis-aligned box. A new box is empty (valid() false) and grows with
// addPoint / addBndBox. A box holding a single point is valid, with zero size.
// minPt/maxPt/midPt/corner of an empty box are meaningless (the extremes it
// starts from); test valid() first.
class CKVBndBox
{
public:
    CKVBndBox();
    // The box spanning two opposite corners in any order.
    CKVBndBox(CKVPoint3D const& a, CKVPoint3D const& b);
    CKVBndBox(CKVBndBox const& other) = default;
    CKVBndBox& operator=(CKVBndBox const& other) = default;
    ~CKVBndBox() = default;

    bool valid() const { return mMin.x <= mMax.x && mMin.y <= mMax.y && mMin.z <= mMax.z; }
    // Back to empty.
    void reset();

    CKVBndBox& addPoint(CKVPoint3D const& point);
    // An empty box adds nothing.
    CKVBndBox& addBndBox(CKVBndBox const& box);

    CKVPoint3D const& minPt() const { return mMin; }
    CKVPoint3D const& maxPt() const { return mMax; }
    CKVPoint3D midPt() const;
    // maxPt - minPt.
    CKVVector3D diagonal() const { return mMax - mMin; }

    // Corner `index` (0..7): bit 0 selects the maximum in x, bit 1 the
    // maximum in y, bit 2 the maximum in z. corner(0) is minPt, corner(7) maxPt.
    CKVPoint3D corner(unsigned int index) const;

    // Within the box grown by `tolerance` on every side. False for an empty box.
    bool contains(CKVPoint3D const& point, double tolerance = Math::kTolerance) const;
    // True when the boxes overlap or touch. False when either is empty.
    bool intersects(CKVBndBox const& other) const;

    // Replaces the box by the box around its eight transformed corners.
    // An empty box stays empty.
    CKVBndBox& transformBy(CKVMatrix3D const& matrix);

private:
    CKVPoint3D mMin;
    CKVPoint3D mMax;
};

} // namespace Kelvor
