#pragma once

#include "TarnwickRender/CKVRenderCommandDispatch.h"

namespace Kelvor {

// Replaces the clip-test planes of the scene.
class CKVRCDispatchUpdateClipTest : public CKVRenderCommandDispatch
{
    KV_DECLARE_RUNTIME_CLASS(CKVRCDispatchUpdateClipTest)
public:
    CKVRCDispatchUpdateClipTest();
    ~CKVRCDispatchUpdateClipTest() override;

    bool dispatch(CKVRenderContext* context, CKVRenderCommand& command) override;
};

} // namespace Kelvor
