#include "viewer/CKVCaptureCallback.h"

#include <osgDB/Registry>
#include <osgDB/WriteFile>

namespace Kelvor {

CKVCaptureCallback::CKVCaptureCallback()
    : mImage(new osg::Image)
    , mRequest(new CKVAtomic)
{
}

CKVCaptureCallback::~CKVCaptureCallback() = default;

bool CKVCaptureCallback::request(char const* path, unsigned int width, unsigned int height)
{
    if (width == 0 || height == 0 || !path || !*path)
        return false;
    mWidth = width;
    mHeight = height;
    mPath = path;
    if (mRequest->getValue() != 1)
        mRequest->inCrease();
    return true;
}

void CKVCaptureCallback::operator()(osg::RenderInfo&) const
{
    if (mRequest->getValue() == 0 || mWidth == 0 || mHeight == 0)
        return;
    // RGB, so that the same image also suits the JPEG writer.
    mImage->readPixels(0, 0, static_cast<int>(mWidth), static_cast<int>(mHeight), GL_RGB, GL_UNSIGNED_BYTE, 1);
    osgDB::writeImageFile(*mImage, mPath.c_str(), osgDB::Registry::instance()->getOptions());
    mRequest->deCrease();
}

} // namespace Kelvor
