#include "TarnwickRender/CKVCamera.h"

#include "TarnwickGeometry/CKVRay3D.h"

#include <cmath>

namespace Kelvor {

CKVCamera::CKVCamera()
    : mPosition(0.0, 0.0, 1.0),
      mUp(0.0, 1.0, 0.0),
      mMode(kPerspective),
      mFieldOfView(60.0),
      mAspect(4.0 / 3.0),
      mNear(0.01),
      mFar(1000.0),
      mOrthoHeight(2.0)
{
    updateView();
    updateProjection();
}

CKVCamera::CKVCamera(CKVCamera const& other) = default;

CKVCamera& CKVCamera::operator=(CKVCamera const& other) = default;

CKVCamera::~CKVCamera() = default;

void CKVCamera::setPosition(CKVPoint3D const& position)
{
    mPosition = position;
    updateView();
}

void CKVCamera::setTarget(CKVPoint3D const& target)
{
    mTarget = target;
    updateView();
}

void CKVCamera::setUp(CKVVector3D const& up)
{
    mUp = up;
    updateView();
}

void CKVCamera::setLookAt(CKVPoint3D const& position, CKVPoint3D const& target, CKVVector3D const& up)
{
    mPosition = position;
    mTarget = target;
    mUp = up;
    updateView();
}

void CKVCamera::pan(CKVVector3D const& offset)
{
    mPosition += offset;
    mTarget += offset;
    updateView();
}

bool CKVCamera::zoom(double factor)
{
    if (!(factor > 0.0) || !std::isfinite(factor))
        return false;
    mPosition = mTarget + (mPosition - mTarget) * factor;
    updateView();
    if (mMode == kOrthographic) {
        mOrthoHeight *= factor;
        updateProjection();
    }
    return true;
}

void CKVCamera::setProjectMode(ProjectMode mode)
{
    mMode = mode;
    updateProjection();
}

void CKVCamera::setFieldOfView(double degrees)
{
    mFieldOfView = degrees;
    updateProjection();
}

void CKVCamera::setAspect(double aspect)
{
    mAspect = aspect;
    updateProjection();
}

void CKVCamera::setNearFar(double zNear, double zFar)
{
    mNear = zNear;
    mFar = zFar;
    updateProjection();
}

void CKVCamera::setOrthoHeight(double height)
{
    mOrthoHeight = height;
    updateProjection();
}

bool CKVCamera::getRayAtNDC(double ndcX, double ndcY, CKVRay3D& out) const
{
    // Inverting the two matrices apart keeps the large translation of the
    // view out of the projection's inverse, which matters far from the origin.
    CKVMatrix3D inverseProjection;
    CKVMatrix3D inverseView;
    if (!mProjection.inverse(inverseProjection) || !mView.inverse(inverseView))
        return false;
    CKVPoint3D const nearPoint =
        inverseView.transformPoint(inverseProjection.transformPoint(CKVPoint3D(ndcX, ndcY, -1.0)));
    CKVPoint3D const farPoint =
        inverseView.transformPoint(inverseProjection.transformPoint(CKVPoint3D(ndcX, ndcY, 1.0)));
    CKVVector3D direction = farPoint - nearPoint;
    if (!std::isfinite(direction.x) || !std::isfinite(direction.y) || !std::isfinite(direction.z) ||
        direction.isZeroLength())
        return false;
    out.set(nearPoint, direction.normalize());
    return true;
}

void CKVCamera::updateView()
{
    mView = CKVMatrix3D::lookAt(mPosition, mTarget, mUp);
}

void CKVCamera::updateProjection()
{
    if (mMode == kOrthographic) {
        double const halfHeight = mOrthoHeight * 0.5;
        double const halfWidth = halfHeight * mAspect;
        mProjection = CKVMatrix3D::ortho(-halfWidth, halfWidth, -halfHeight, halfHeight, mNear, mFar);
    } else {
        mProjection = CKVMatrix3D::perspective(mFieldOfView, mAspect, mNear, mFar);
    }
}

} // namespace Kelvor
