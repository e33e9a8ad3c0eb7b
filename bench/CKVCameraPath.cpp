#include "bench/CKVCameraPath.h"

#include <algorithm>
#include <cmath>

namespace Kelvor {

CKVCameraPath::CKVCameraPath(double const centre[3], double radius, unsigned int framesPerTurn)
    // At 45 degrees a sphere of `radius` fills the height of the view from
    // about 2.6 radii away.
    : mCentre{centre[0], centre[1], centre[2]}, mDistance(2.6 * std::max(radius, 1.0)),
      mFramesPerTurn(std::max(framesPerTurn, 1u))
{
}

void CKVCameraPath::setEyeLevel(double horizontal, double eyeZ)
{
    mEyeLevel = true;
    mHorizontal = horizontal;
    mEyeZ = eyeZ;
    mDistance = horizontal;
}

void CKVCameraPath::eyeAt(unsigned int frame, double eye[3]) const
{
    double const angle = 2.0 * 3.14159265358979 * double(frame % mFramesPerTurn) / mFramesPerTurn;
    if (mEyeLevel) {
        eye[0] = mCentre[0] + mHorizontal * std::cos(angle);
        eye[1] = mCentre[1] + mHorizontal * std::sin(angle);
        eye[2] = mEyeZ;
        return;
    }
    // 35 degrees above the horizon.
    double const horizontal = mDistance * 0.819, vertical = mDistance * 0.574;
    eye[0] = mCentre[0] + horizontal * std::cos(angle);
    eye[1] = mCentre[1] + horizontal * std::sin(angle);
    eye[2] = mCentre[2] + vertical;
}

void CKVCameraPath::target(double out[3]) const
{
    std::copy(mCentre, mCentre + 3, out);
    if (mEyeLevel)
        out[2] = mEyeZ;
}

} // namespace Kelvor
