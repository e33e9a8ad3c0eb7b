#include "TarnwickRender/CKVRCWaterMask.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS(CKVRCWaterMask, CKVRenderCommand)

CKVRCWaterMask::CKVRCWaterMask(char const* imagePath, unsigned int width, unsigned int height)
    : mImagePath(imagePath), mWidth(width), mHeight(height)
{
}

CKVRCWaterMask::~CKVRCWaterMask() = default;

CKVRenderCommand::ID CKVRCWaterMask::getID() const
{
    return kWaterMask;
}

} // namespace Kelvor
