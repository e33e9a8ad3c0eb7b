#include "TarnwickRender/CKVRCZoomCamera.h"

#include "TarnwickRender/CKVScene.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS(CKVRCZoomCamera, CKVRenderCommand)

CKVRCZoomCamera::CKVRCZoomCamera(CKVEvent const& event)
    : mEvent(event), mHasSceneCamera(false)
{
    if (CKVScene* scene = mEvent.getScene()) {
        scene->getSafeCamera(mSceneCamera);
        mHasSceneCamera = true;
    }
}

CKVRCZoomCamera::~CKVRCZoomCamera() = default;

CKVRenderCommand::ID CKVRCZoomCamera::getID() const
{
    return kZoomCamera;
}

void CKVRCZoomCamera::applySceneCamera(CKVCamera const& camera)
{
    CKVScene* scene = mEvent.getScene();
    if (!scene)
        return;
    mSceneCamera = camera;
    scene->setCamera(camera);
}

} // namespace Kelvor
