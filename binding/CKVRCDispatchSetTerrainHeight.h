#pragma once

#include "TarnwickRender/CKVRenderCommandDispatch.h"

namespace Kelvor {

// Sets the height of the terrain surface.
class CKVRCDispatchSetTerrainHeight : public CKVRenderCommandDispatch
{
    KV_DECLARE_RUNTIME_CLASS(CKVRCDispatchSetTerrainHeight)
public:
    CKVRCDispatchSetTerrainHeight();
    ~CKVRCDispatchSetTerrainHeight() override;

    bool dispatch(CKVRenderContext* context, CKVRenderCommand& command) override;
};

} // namespace Kelvor
