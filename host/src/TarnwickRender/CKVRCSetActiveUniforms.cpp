#include "TarnwickRender/CKVRCSetActiveUniforms.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS(CKVRCSetActiveUniforms, CKVRenderCommand)

CKVRCSetActiveUniforms::CKVRCSetActiveUniforms(int mask)
    : mMask(mask)
{
}

CKVRCSetActiveUniforms::~CKVRCSetActiveUniforms() = default;

CKVRenderCommand::ID CKVRCSetActiveUniforms::getID() const
{
    return kSetActiveUniforms;
}

} // namespace Kelvor
