#include "TarnwickRender/CKVRCGetCapture.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS(CKVRCGetCapture, CKVRenderCommand)

CKVRCGetCapture::CKVRCGetCapture(char const* filePath, CKVVec2<unsigned int> const& size, CKVCamera const& camera,
                                 bool thumbnail)
    : mFilePath(filePath), mSize(size), mCamera(camera), mThumbnail(thumbnail)
{
}

CKVRCGetCapture::~CKVRCGetCapture() = default;

CKVRenderCommand::ID CKVRCGetCapture::getID() const
{
    return kGetCapture;
}

} // namespace Kelvor
