#pragma once

#include "TarnwickGeometry/CKVPoint3D.h"
#include "TarnwickRender/CKVOperator.h"

namespace Kelvor {

class CKVCamera;
class CKVScene;
class ViewCommandSink;

// The viewer's only tool. Left drag orbits about the camera's target (z
// stays up), middle or right drag pans, the wheel zooms towards the cursor,
// a left click without a drag picks, keys go to the sink. Camera moves are
// made on the scene's camera and sent as commands.
class ViewOrbitOperator : public CKVOperator
{
public:
    // Radians per pixel of drag.
    static constexpr double kOrbitSpeed = 0.008;
    // A press that moves less than this many pixels is a click.
    static constexpr double kClickSlop = 4.0;

    ViewOrbitOperator(CKVScene& scene, ViewCommandSink& sink);
    ~ViewOrbitOperator() override;

    void onLButtonDown(CKVEvent const& event) override;
    void onLButtonUp(CKVEvent const& event) override;
    void onMButtonDown(CKVEvent const& event) override;
    void onMButtonUp(CKVEvent const& event) override;
    void onRButtonDown(CKVEvent const& event) override;
    void onRButtonUp(CKVEvent const& event) override;
    void onMouseMove(CKVEvent const& event) override;
    void onMouseWheel(CKVEvent const& event) override;
    void onKeyDown(CKVEvent const& event) override;

    // Turns the camera about its target: `yaw` about world z, `pitch` about
    // the camera's right axis, never over the poles.
    static void orbit(CKVCamera& camera, double yaw, double pitch);
    // Moves the camera across the view by a pixel offset (x right, y down)
    // so that the point on the target plane follows the cursor.
    static void pan(CKVCamera& camera, double dx, double dy, int viewportHeight);

private:
    enum class Drag { kNone, kOrbit, kPan };

    void begin(Drag drag, CKVEvent const& event);
    void end(CKVEvent const& event, bool isLeft);

    CKVScene& mScene;
    ViewCommandSink& mSink;
    Drag mDrag = Drag::kNone;
    bool mMoved = false;
    CKVPoint3D mPress;
    CKVPoint3D mLast;
};

} // namespace Kelvor
