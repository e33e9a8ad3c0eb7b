#pragma once

#include "TarnwickRender/CKVRenderCommandDispatch.h"

namespace Kelvor {

// Selects the objects inside a screen rectangle; on a miss the command's
// results stay as they were.
class CKVRCDispatchAreaSelectObject : public CKVRenderCommandDispatch
{
    KV_DECLARE_RUNTIME_CLASS(CKVRCDispatchAreaSelectObject)
public:
    CKVRCDispatchAreaSelectObject();
    ~CKVRCDispatchAreaSelectObject() override;

    bool dispatch(CKVRenderContext* context, CKVRenderCommand& command) override;
};

} // namespace Kelvor
