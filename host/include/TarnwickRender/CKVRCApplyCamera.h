#pragma once

#include "TarnwickRender/CKVCamera.h"
#include "TarnwickRender/CKVRenderCommand.h"

namespace Kelvor {

// Moves the render context's camera to a copy of the host's camera.
class CKVRCApplyCamera : public CKVRenderCommand
{
    KV_DECLARE_RUNTIME_CLASS(CKVRCApplyCamera)
public:
    explicit CKVRCApplyCamera(CKVCamera const& camera);
    ~CKVRCApplyCamera() override;

    ID getID() const override;

    CKVCamera const& getCamera() const { return mCamera; }

private:
    CKVCamera mCamera;
};

} // namespace Kelvor
