#pragma once

#include "TarnwickRender/CKVRenderCommandDispatch.h"

namespace Kelvor {

// Removes a child node from a parent that is one of our scene nodes.
class CKVRCDispatchRemoveSceneNode : public CKVRenderCommandDispatch
{
    KV_DECLARE_RUNTIME_CLASS(CKVRCDispatchRemoveSceneNode)
public:
    CKVRCDispatchRemoveSceneNode();
    ~CKVRCDispatchRemoveSceneNode() override;

    bool dispatch(CKVRenderContext* context, CKVRenderCommand& command) override;
};

} // namespace Kelvor
