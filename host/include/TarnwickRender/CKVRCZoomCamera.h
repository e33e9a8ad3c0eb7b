#pragma once

#include "TarnwickRender/CKVCamera.h"
#include "TarnwickRender/CKVEvent.h"
#include "TarnwickRender/CKVRenderCommand.h"

namespace Kelvor {

// Zooms about the point under the cursor of a wheel event. The record starts
// with a copy of the event's scene camera; the render thread hands back each
// camera it settles on through `applySceneCamera`, which also moves the
// scene's camera so that the scene's select ray follows the zoom.
class CKVRCZoomCamera : public CKVRenderCommand
{
    KV_DECLARE_RUNTIME_CLASS(CKVRCZoomCamera)
public:
    explicit CKVRCZoomCamera(CKVEvent const& event);
    ~CKVRCZoomCamera() override;

    ID getID() const override;

    // Null when the event has no scene.
    CKVCamera const* getSceneCamera() const { return mHasSceneCamera ? &mSceneCamera : nullptr; }
    CKVEvent const& getEvent() const { return mEvent; }
    // Stores the camera here and on the event's scene; no effect without a scene.
    void applySceneCamera(CKVCamera const& camera);

private:
    CKVEvent mEvent;
    CKVCamera mSceneCamera;
    bool mHasSceneCamera;
};

} // namespace Kelvor
