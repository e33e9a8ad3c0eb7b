#pragma once

#include "TarnwickGeometry/CKVMatrix3D.h"
#include "TarnwickGeometry/CKVPoint3D.h"
#include "TarnwickGeometry/CKVVector3D.h"

namespace Kelvor {

class CKVRay3D;

// The host's camera: a look-at frame and a projection. The view and
// projection matrices are rebuilt by every setter, so the references handed
// out always agree with the parameters. Both matrices follow the OpenGL
// convention (view down -z, clip depth -1 at near, +1 at far).
class CKVCamera
{
public:
    enum ProjectMode : int { kOrthographic = 0, kPerspective = 1 };

    // Eye at (0, 0, 1) looking at the origin with +y up; perspective, 60
    // degrees, aspect 4:3, near 0.01, far 1000; ortho height 2.
    CKVCamera();
    CKVCamera(CKVCamera const& other);
    CKVCamera& operator=(CKVCamera const& other);
    ~CKVCamera();

    CKVMatrix3D const& getViewMatrix() const { return mView; }
    CKVMatrix3D const& getProjectMatrix() const { return mProjection; }

    CKVPoint3D const& getPosition() const { return mPosition; }
    CKVPoint3D const& getTarget() const { return mTarget; }
    CKVVector3D const& getUp() const { return mUp; }
    void setPosition(CKVPoint3D const& position);
    void setTarget(CKVPoint3D const& target);
    void setUp(CKVVector3D const& up);
    void setLookAt(CKVPoint3D const& position, CKVPoint3D const& target, CKVVector3D const& up);
    double getDistance() const { return mPosition.distanceTo(mTarget); }

    // Moves position and target together.
    void pan(CKVVector3D const& offset);
    // Scales the position about the target, so the distance is multiplied by
    // `factor`. An orthographic view has no sense of distance, so its height
    // is scaled too and the picture zooms in both modes. False, with nothing
    // changed, for a factor that is not a positive number.
    bool zoom(double factor);

    ProjectMode getProjectMode() const { return mMode; }
    void setProjectMode(ProjectMode mode);
    // Full vertical angle in degrees, perspective only.
    double getFieldOfView() const { return mFieldOfView; }
    void setFieldOfView(double degrees);
    // Width over height of the viewport.
    double getAspect() const { return mAspect; }
    void setAspect(double aspect);
    double getNear() const { return mNear; }
    double getFar() const { return mFar; }
    void setNearFar(double zNear, double zFar);
    // Height of the view volume in world units, orthographic only.
    double getOrthoHeight() const { return mOrthoHeight; }
    void setOrthoHeight(double height);

    // The ray through a point in normalised device coordinates (-1..1, y up),
    // from the near plane towards the far plane, with a unit direction.
    // Computed from the two matrices, so it agrees with them exactly.
    // False when a matrix cannot be inverted.
    bool getRayAtNDC(double ndcX, double ndcY, CKVRay3D& out) const;

private:
    void updateView();
    void updateProjection();

    CKVPoint3D mPosition;
    CKVPoint3D mTarget;
    CKVVector3D mUp;
    ProjectMode mMode;
    double mFieldOfView;
    double mAspect;
    double mNear;
    double mFar;
    double mOrthoHeight;
    CKVMatrix3D mView;
    CKVMatrix3D mProjection;
};

} // namespace Kelvor
