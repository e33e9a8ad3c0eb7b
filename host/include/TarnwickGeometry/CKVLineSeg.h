#pragma once

#include "TarnwickGeometry/CKVPoint3D.h"
#include "TarnwickGeometry/CKVVector3D.h"

namespace Kelvor {

// A line segment between two points.
class CKVLineSeg
{
public:
    CKVLineSeg() = default;
    CKVLineSeg(CKVPoint3D const& start, CKVPoint3D const& end) : mStart(start), mEnd(end) {}
    ~CKVLineSeg() = default;

    CKVLineSeg& set(CKVPoint3D const& start, CKVPoint3D const& end)
    {
        mStart = start;
        mEnd = end;
        return *this;
    }

    CKVPoint3D const& getStartPoint() const { return mStart; }
    CKVPoint3D const& getEndPoint() const { return mEnd; }
    // end - start.
    CKVVector3D getDirection() const { return mEnd - mStart; }
    double length() const { return mStart.distanceTo(mEnd); }
    CKVPoint3D midPoint() const { return mStart + (mEnd - mStart) * 0.5; }

private:
    CKVPoint3D mStart;
    CKVPoint3D mEnd;
};

} // namespace Kelvor
