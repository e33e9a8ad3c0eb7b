#pragma once

namespace Kelvor {

// The camera of every benchmark frame: a slow circle around the campus,
// looking at its centre from above, the whole model in view. Both scene
// graphs see the same eye and target for the same frame index.
class CKVCameraPath
{
public:
    CKVCameraPath(double const centre[3], double radius, unsigned int framesPerTurn);

    // Walks round at eye height `eyeZ`, `horizontal` from the centre in
    // plan, looking level at the centre's vertical line instead.
    void setEyeLevel(double horizontal, double eyeZ);

    void eyeAt(unsigned int frame, double eye[3]) const;
    void target(double out[3]) const;

    static constexpr double kFieldOfViewDegrees = 45.0;
    double nearPlane() const { return mDistance * 0.02; }
    double farPlane() const { return mDistance * 3.0; }

private:
    double mCentre[3];
    double mDistance;
    unsigned int mFramesPerTurn;
    bool mEyeLevel = false;
    double mHorizontal = 0.0;
    double mEyeZ = 0.0;
};

} // namespace Kelvor
