#pragma once

#include "TarnwickRender/CKVRenderCommandDispatch.h"

namespace Kelvor {

// Chooses which uniforms the main scene view sets itself each frame.
class CKVRCDispatchSetActiveUniforms : public CKVRenderCommandDispatch
{
    KV_DECLARE_RUNTIME_CLASS(CKVRCDispatchSetActiveUniforms)
public:
    CKVRCDispatchSetActiveUniforms();
    ~CKVRCDispatchSetActiveUniforms() override;

    bool dispatch(CKVRenderContext* context, CKVRenderCommand& command) override;
};

} // namespace Kelvor
