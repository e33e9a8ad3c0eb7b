#pragma once

#include "TarnwickRender/CKVRenderCommand.h"
#include "TarnwickRender/CKVRenderConfig.h"

namespace Kelvor {

// Applies a copy of a render configuration.
class CKVRCApplyRenderConfig : public CKVRenderCommand
{
    KV_DECLARE_RUNTIME_CLASS(CKVRCApplyRenderConfig)
public:
    explicit CKVRCApplyRenderConfig(CKVRenderConfig const& config);
    ~CKVRCApplyRenderConfig() override;

    ID getID() const override;

    CKVRenderConfig const& getRenderConfig() const { return mConfig; }

private:
    CKVRenderConfig mConfig;
};

} // namespace Kelvor
