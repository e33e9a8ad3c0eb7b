#include "TarnwickRender/CKVRCApplyBackGround.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS(CKVRCApplyBackGround, CKVRenderCommand)

CKVRCApplyBackGround::CKVRCApplyBackGround(CKVBackGroundConfig const& config)
    : mConfig(config)
{
}

CKVRCApplyBackGround::~CKVRCApplyBackGround() = default;

CKVRenderCommand::ID CKVRCApplyBackGround::getID() const
{
    return kApplyBackGround;
}

} // namespace Kelvor
