#pragma once

#include "TarnwickRender/CKVRenderCommandDispatch.h"

namespace Kelvor {

// Removes a render object from a scene node.
class CKVRCDispatchRemoveRenderObject : public CKVRenderCommandDispatch
{
    KV_DECLARE_RUNTIME_CLASS(CKVRCDispatchRemoveRenderObject)
public:
    CKVRCDispatchRemoveRenderObject();
    ~CKVRCDispatchRemoveRenderObject() override;

    bool dispatch(CKVRenderContext* context, CKVRenderCommand& command) override;
};

} // namespace Kelvor
