#pragma once

#include "TarnwickRender/CKVRenderCommandDispatch.h"

namespace Kelvor {

// Follows a new window size.
class CKVRCDispatchSetViewPort : public CKVRenderCommandDispatch
{
    KV_DECLARE_RUNTIME_CLASS(CKVRCDispatchSetViewPort)
public:
    CKVRCDispatchSetViewPort();
    ~CKVRCDispatchSetViewPort() override;

    bool dispatch(CKVRenderContext* context, CKVRenderCommand& command) override;
};

} // namespace Kelvor
