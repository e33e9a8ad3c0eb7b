#pragma once

#include "TarnwickCommon/CKVAString.h"
#include "TarnwickCommon/CKVAtomic.h"

#include <osg/Camera>
#include <osg/Image>

#include <memory>

namespace Kelvor {

// Post-draw callback of the main camera for the older capture path: once
// requested, the next draw reads the window's pixels at the requested size
// and writes them to the requested file.
class CKVCaptureCallback : public osg::Camera::DrawCallback
{
public:
    CKVCaptureCallback();

    // Arms one capture. False, with nothing armed, for an empty size or path.
    // A capture already armed is re-aimed, not queued a second time.
    bool request(char const* path, unsigned int width, unsigned int height);
    bool isRequested() const { return mRequest->getValue() != 0; }

    osg::Image* getImage() const { return mImage.get(); }
    unsigned int getWidth() const { return mWidth; }
    unsigned int getHeight() const { return mHeight; }
    CKVAString const& getPath() const { return mPath; }

    void operator()(osg::RenderInfo& renderInfo) const override;

protected:
    ~CKVCaptureCallback() override;

private:
    osg::ref_ptr<osg::Image> mImage;
    unsigned int mWidth = 0;
    unsigned int mHeight = 0;
    std::unique_ptr<CKVAtomic> mRequest;
    CKVAString mPath;
};

} // namespace Kelvor
