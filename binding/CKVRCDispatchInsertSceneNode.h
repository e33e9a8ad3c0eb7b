#pragma once

#include "TarnwickRender/CKVRenderCommandDispatch.h"

namespace Kelvor {

// Adds a child node under a parent that is one of our scene nodes.
class CKVRCDispatchInsertSceneNode : public CKVRenderCommandDispatch
{
    KV_DECLARE_RUNTIME_CLASS(CKVRCDispatchInsertSceneNode)
public:
    CKVRCDispatchInsertSceneNode();
    ~CKVRCDispatchInsertSceneNode() override;

    bool dispatch(CKVRenderContext* context, CKVRenderCommand& command) override;
};

} // namespace Kelvor
