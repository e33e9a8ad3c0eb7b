#include "apps/view/ViewOrbitOperator.h"

#include "apps/view/ViewCommandSink.h"
#include "TarnwickRender/CKVCamera.h"
#include "TarnwickRender/CKVEvent.h"
#include "TarnwickRender/CKVScene.h"

#include <algorithm>
#include <cmath>

namespace Kelvor {

namespace {

constexpr double kPi = 3.14159265358979323846;
// How close to straight up or down the view may turn: at the pole the
// look-at frame with z up would be undefined.
constexpr double kPoleMargin = 0.02;

CKVVector3D rotateAboutAxis(CKVVector3D const& v, CKVVector3D axis, double angle)
{
    // Rodrigues' rotation formula.
    axis.normalize(1.0e-12);
    double const c = std::cos(angle);
    double const s = std::sin(angle);
    return v * c + axis.crossProduct(v) * s + axis * (axis.dotProduct(v) * (1.0 - c));
}

} // namespace

ViewOrbitOperator::ViewOrbitOperator(CKVScene& scene, ViewCommandSink& sink)
    : mScene(scene)
    , mSink(sink)
{
}

ViewOrbitOperator::~ViewOrbitOperator() = default;

void ViewOrbitOperator::orbit(CKVCamera& camera, double yaw, double pitch)
{
    CKVPoint3D const target = camera.getTarget();
    CKVVector3D offset = camera.getPosition() - target;
    double const distance = offset.length();
    if (distance <= 0.0)
        return;
    CKVVector3D const zAxis(0.0, 0.0, 1.0);
    offset = rotateAboutAxis(offset, zAxis, yaw);

    // The angle from +z; pitch moves it and is clamped short of the poles.
    double const polar = std::acos(std::clamp(offset.z / distance, -1.0, 1.0));
    double const wanted = std::clamp(polar + pitch, kPoleMargin, kPi - kPoleMargin);
    CKVVector3D right = zAxis.crossProduct(offset);
    if (right.length() > 1.0e-9 * distance)
        offset = rotateAboutAxis(offset, right, wanted - polar);
    camera.setLookAt(target + offset, target, zAxis);
}

void ViewOrbitOperator::pan(CKVCamera& camera, double dx, double dy, int viewportHeight)
{
    if (viewportHeight <= 0)
        return;
    // World units per pixel on the plane through the target.
    double const viewHeight = camera.getProjectMode() == CKVCamera::kPerspective
                                  ? 2.0 * camera.getDistance() * std::tan(0.5 * camera.getFieldOfView() * kPi / 180.0)
                                  : camera.getOrthoHeight();
    double const scale = viewHeight / viewportHeight;
    CKVVector3D forward = camera.getTarget() - camera.getPosition();
    forward.normalize(1.0e-12);
    CKVVector3D right = forward.crossProduct(camera.getUp());
    right.normalize(1.0e-12);
    CKVVector3D const up = right.crossProduct(forward);
    // Dragging right moves the scene right, so the camera goes left.
    camera.pan(right * (-dx * scale) + up * (dy * scale));
}

void ViewOrbitOperator::begin(Drag drag, CKVEvent const& event)
{
    mDrag = drag;
    mMoved = false;
    mPress = event.getNDCPos();
    mLast = mPress;
}

void ViewOrbitOperator::end(CKVEvent const& event, bool isLeft)
{
    bool const click = isLeft && mDrag == Drag::kOrbit && !mMoved;
    mDrag = Drag::kNone;
    if (click)
        mSink.pick(event.getNDCPos());
}

void ViewOrbitOperator::onLButtonDown(CKVEvent const& event)
{
    begin(Drag::kOrbit, event);
}

void ViewOrbitOperator::onLButtonUp(CKVEvent const& event)
{
    end(event, true);
}

void ViewOrbitOperator::onMButtonDown(CKVEvent const& event)
{
    begin(Drag::kPan, event);
}

void ViewOrbitOperator::onMButtonUp(CKVEvent const& event)
{
    end(event, false);
}

void ViewOrbitOperator::onRButtonDown(CKVEvent const& event)
{
    begin(Drag::kPan, event);
}

void ViewOrbitOperator::onRButtonUp(CKVEvent const& event)
{
    end(event, false);
}

void ViewOrbitOperator::onMouseMove(CKVEvent const& event)
{
    if (mDrag == Drag::kNone || event.getMouseButtons() == 0)
        return;
    CKVPoint3D const now = event.getNDCPos();
    if (!mMoved && std::hypot(now.x - mPress.x, now.y - mPress.y) < kClickSlop)
        return;
    mMoved = true;
    double const dx = now.x - mLast.x;
    double const dy = now.y - mLast.y;
    mLast = now;
    CKVCamera camera;
    mScene.getSafeCamera(camera);
    if (mDrag == Drag::kOrbit)
        orbit(camera, -dx * kOrbitSpeed, -dy * kOrbitSpeed);
    else
        pan(camera, dx, dy, event.getNDCHeight());
    mScene.setCamera(camera);
    mSink.applyCamera(camera);
}

void ViewOrbitOperator::onMouseWheel(CKVEvent const& event)
{
    if (event.getMouseWheel() != CKVEvent::kNoWheel)
        mSink.zoom(event);
}

void ViewOrbitOperator::onKeyDown(CKVEvent const& event)
{
    mSink.keyDown(event);
}

} // namespace Kelvor
