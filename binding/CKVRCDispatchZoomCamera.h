#pragma once

#include "TarnwickRender/CKVRenderCommandDispatch.h"

namespace Kelvor {

class CKVCamera;
class CKVEvent;
class CKVGraphicsModel;
class CKVOSGCamera;
class CKVPoint3D;
class CKVPostProcessNode;

// Zooms the host's camera towards what lies under the cursor, keeping that
// point fixed on screen. Within the configured distance limits a camera
// may always move back towards them, never further out of them.
class CKVRCDispatchZoomCamera : public CKVRenderCommandDispatch
{
    KV_DECLARE_RUNTIME_CLASS(CKVRCDispatchZoomCamera)
public:
    CKVRCDispatchZoomCamera();
    ~CKVRCDispatchZoomCamera() override;

    bool dispatch(CKVRenderContext* context, CKVRenderCommand& command) override;

private:
    // The depth under a pixel (y from the top), from the root's depth
    // target when the scene was drawn into it, else from the window; 1.0
    // when nothing was drawn there or the pixel lies outside the viewport.
    static double readDepth(CKVOSGCamera const& camera, CKVPostProcessNode const* root, CKVPoint3D const& pixel);
    // The world point of a depth under a pixel, through the projection the
    // frame was culled with.
    static CKVPoint3D unproject(CKVOSGCamera const& camera, CKVPoint3D const& pixel, double depth);
    // A point found behind the model's box is pulled back onto the box's far
    // side along the pick ray: the depth there belongs to the background.
    static void limitByModel(CKVGraphicsModel& model, CKVCamera const& camera, CKVEvent const& event,
                             CKVPoint3D& focus);
};

} // namespace Kelvor
