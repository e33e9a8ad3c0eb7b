#pragma once

#include "TarnwickRender/CKVRenderCommandDispatch.h"

namespace Kelvor {

// Takes a host scene node out of the context's scene.
class CKVRCDispatchDetachSceneData : public CKVRenderCommandDispatch
{
    KV_DECLARE_RUNTIME_CLASS(CKVRCDispatchDetachSceneData)
public:
    CKVRCDispatchDetachSceneData();
    ~CKVRCDispatchDetachSceneData() override;

    bool dispatch(CKVRenderContext* context, CKVRenderCommand& command) override;
};

} // namespace Kelvor
