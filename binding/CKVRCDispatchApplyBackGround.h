#pragma once

#include "TarnwickRender/CKVRenderCommandDispatch.h"

namespace Kelvor {

// Applies a background on its own. No command id selects it: a background
// normally arrives inside a render configuration.
class CKVRCDispatchApplyBackGround : public CKVRenderCommandDispatch
{
    KV_DECLARE_RUNTIME_CLASS(CKVRCDispatchApplyBackGround)
public:
    CKVRCDispatchApplyBackGround();
    ~CKVRCDispatchApplyBackGround() override;

    bool dispatch(CKVRenderContext* context, CKVRenderCommand& command) override;
};

} // namespace Kelvor
