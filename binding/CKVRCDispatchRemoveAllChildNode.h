#pragma once

#include "TarnwickRender/CKVRenderCommandDispatch.h"

namespace Kelvor {

// Empties a scene node of its children. Children the node keeps do not
// make the command fail: the node itself was ours.
class CKVRCDispatchRemoveAllChildNode : public CKVRenderCommandDispatch
{
    KV_DECLARE_RUNTIME_CLASS(CKVRCDispatchRemoveAllChildNode)
public:
    CKVRCDispatchRemoveAllChildNode();
    ~CKVRCDispatchRemoveAllChildNode() override;

    bool dispatch(CKVRenderContext* context, CKVRenderCommand& command) override;
};

} // namespace Kelvor
