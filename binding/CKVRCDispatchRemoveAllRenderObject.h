#pragma once

#include "TarnwickRender/CKVRenderCommandDispatch.h"

namespace Kelvor {

// Empties a scene node of its render objects. Objects the node keeps do
// not make the command fail: the node itself was ours.
class CKVRCDispatchRemoveAllRenderObject : public CKVRenderCommandDispatch
{
    KV_DECLARE_RUNTIME_CLASS(CKVRCDispatchRemoveAllRenderObject)
public:
    CKVRCDispatchRemoveAllRenderObject();
    ~CKVRCDispatchRemoveAllRenderObject() override;

    bool dispatch(CKVRenderContext* context, CKVRenderCommand& command) override;
};

} // namespace Kelvor
