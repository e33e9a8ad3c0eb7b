#pragma once

#include "TarnwickRender/CKVRenderCommandDispatch.h"

namespace Kelvor {

// Gives the host's camera to the context's main camera.
class CKVRCDispatchApplyCamera : public CKVRenderCommandDispatch
{
    KV_DECLARE_RUNTIME_CLASS(CKVRCDispatchApplyCamera)
public:
    CKVRCDispatchApplyCamera();
    ~CKVRCDispatchApplyCamera() override;

    bool dispatch(CKVRenderContext* context, CKVRenderCommand& command) override;
};

} // namespace Kelvor
