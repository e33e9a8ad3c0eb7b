#pragma once

#include "TarnwickRender/CKVRenderCommandDispatch.h"

namespace Kelvor {

// Captures a frame seen through the given camera into an image file.
class CKVRCDispatchGetCapture : public CKVRenderCommandDispatch
{
    KV_DECLARE_RUNTIME_CLASS(CKVRCDispatchGetCapture)
public:
    CKVRCDispatchGetCapture();
    ~CKVRCDispatchGetCapture() override;

    bool dispatch(CKVRenderContext* context, CKVRenderCommand& command) override;
};

} // namespace Kelvor
