#pragma once

#include "TarnwickRender/CKVRenderCommandDispatch.h"

namespace Kelvor {

// Picks the object under a pixel. A pick that hits nothing leaves the
// command's selection unset, which is how the host tells a miss.
class CKVRCDispatchPickSelectObject : public CKVRenderCommandDispatch
{
    KV_DECLARE_RUNTIME_CLASS(CKVRCDispatchPickSelectObject)
public:
    CKVRCDispatchPickSelectObject();
    ~CKVRCDispatchPickSelectObject() override;

    bool dispatch(CKVRenderContext* context, CKVRenderCommand& command) override;
};

} // namespace Kelvor
