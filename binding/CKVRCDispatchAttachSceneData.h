#pragma once

#include "TarnwickRender/CKVRenderCommandDispatch.h"

namespace Kelvor {

// Puts a host scene node into the context's scene.
class CKVRCDispatchAttachSceneData : public CKVRenderCommandDispatch
{
    KV_DECLARE_RUNTIME_CLASS(CKVRCDispatchAttachSceneData)
public:
    CKVRCDispatchAttachSceneData();
    ~CKVRCDispatchAttachSceneData() override;

    bool dispatch(CKVRenderContext* context, CKVRenderCommand& command) override;
};

} // namespace Kelvor
