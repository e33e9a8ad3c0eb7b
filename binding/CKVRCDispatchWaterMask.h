#pragma once

#include "TarnwickRender/CKVRenderCommandDispatch.h"

namespace Kelvor {

// Renders the water mask of the scene into an image file.
class CKVRCDispatchWaterMask : public CKVRenderCommandDispatch
{
    KV_DECLARE_RUNTIME_CLASS(CKVRCDispatchWaterMask)
public:
    CKVRCDispatchWaterMask();
    ~CKVRCDispatchWaterMask() override;

    bool dispatch(CKVRenderContext* context, CKVRenderCommand& command) override;
};

} // namespace Kelvor
