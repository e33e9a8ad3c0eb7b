#pragma once

#include "TarnwickRender/CKVRenderCommandDispatch.h"

namespace Kelvor {

// Applies the host's render configuration.
class CKVRCDispatchApplyRenderConfig : public CKVRenderCommandDispatch
{
    KV_DECLARE_RUNTIME_CLASS(CKVRCDispatchApplyRenderConfig)
public:
    CKVRCDispatchApplyRenderConfig();
    ~CKVRCDispatchApplyRenderConfig() override;

    bool dispatch(CKVRenderContext* context, CKVRenderCommand& command) override;
};

} // namespace Kelvor
