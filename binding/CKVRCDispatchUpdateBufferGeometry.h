#pragma once

#include "TarnwickRender/CKVRenderCommandDispatch.h"

namespace Kelvor {

// Hands the logic buffers the host added or removed to a buffer geometry,
// repacks it and rebuilds its arrays when the packing changed anything.
class CKVRCDispatchUpdateBufferGeometry : public CKVRenderCommandDispatch
{
    KV_DECLARE_RUNTIME_CLASS(CKVRCDispatchUpdateBufferGeometry)
public:
    CKVRCDispatchUpdateBufferGeometry();
    ~CKVRCDispatchUpdateBufferGeometry() override;

    bool dispatch(CKVRenderContext* context, CKVRenderCommand& command) override;
};

} // namespace Kelvor
