#include "TarnwickRender/CKVRCApplyCamera.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS(CKVRCApplyCamera, CKVRenderCommand)

CKVRCApplyCamera::CKVRCApplyCamera(CKVCamera const& camera)
    : mCamera(camera)
{
}

CKVRCApplyCamera::~CKVRCApplyCamera() = default;

CKVRenderCommand::ID CKVRCApplyCamera::getID() const
{
    return kApplyCamera;
}

} // namespace Kelvor
