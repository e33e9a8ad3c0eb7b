#pragma once

#include "TarnwickCommon/CKVAString.h"
#include "TarnwickRender/CKVRenderCommand.h"

namespace Kelvor {

// Installs the image that marks water in the terrain, with its size.
class CKVRCWaterMask : public CKVRenderCommand
{
    KV_DECLARE_RUNTIME_CLASS(CKVRCWaterMask)
public:
    CKVRCWaterMask(char const* imagePath, unsigned int width, unsigned int height);
    ~CKVRCWaterMask() override;

    ID getID() const override;

    char const* getImagePath() const { return mImagePath.c_str(); }
    unsigned int getWidth() const { return mWidth; }
    unsigned int getHeight() const { return mHeight; }

private:
    CKVAString mImagePath;
    unsigned int mWidth;
    unsigned int mHeight;
};

} // namespace Kelvor
