#pragma once

#include "TarnwickRender/CKVRenderCommandDispatch.h"

namespace Kelvor {

// Adds a render object (buffer geometry, text, node group) to a scene node.
class CKVRCDispatchInsertRenderObject : public CKVRenderCommandDispatch
{
    KV_DECLARE_RUNTIME_CLASS(CKVRCDispatchInsertRenderObject)
public:
    CKVRCDispatchInsertRenderObject();
    ~CKVRCDispatchInsertRenderObject() override;

    bool dispatch(CKVRenderContext* context, CKVRenderCommand& command) override;
};

} // namespace Kelvor
