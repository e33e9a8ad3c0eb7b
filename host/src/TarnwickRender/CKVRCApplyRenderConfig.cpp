#include "TarnwickRender/CKVRCApplyRenderConfig.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS(CKVRCApplyRenderConfig, CKVRenderCommand)

CKVRCApplyRenderConfig::CKVRCApplyRenderConfig(CKVRenderConfig const& config)
    : mConfig(config)
{
}

CKVRCApplyRenderConfig::~CKVRCApplyRenderConfig() = default;

CKVRenderCommand::ID CKVRCApplyRenderConfig::getID() const
{
    return kApplyRenderConfig;
}

} // namespace Kelvor
