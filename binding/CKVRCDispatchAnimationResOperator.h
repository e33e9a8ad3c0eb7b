#pragma once

#include "TarnwickRender/CKVRenderCommandDispatch.h"

namespace Kelvor {

// Attaches, detaches, chooses or stops an animation resource on a scene node.
class CKVRCDispatchAnimationResOperator : public CKVRenderCommandDispatch
{
    KV_DECLARE_RUNTIME_CLASS(CKVRCDispatchAnimationResOperator)
public:
    CKVRCDispatchAnimationResOperator();
    ~CKVRCDispatchAnimationResOperator() override;

    bool dispatch(CKVRenderContext* context, CKVRenderCommand& command) override;
};

} // namespace Kelvor
