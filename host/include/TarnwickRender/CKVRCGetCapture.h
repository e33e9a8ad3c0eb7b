#pragma once

#include "TarnwickCommon/CKVAString.h"
#include "TarnwickCommon/CKVVec.h"
#include "TarnwickRender/CKVCamera.h"
#include "TarnwickRender/CKVRenderCommand.h"

namespace Kelvor {

// Renders one picture of the given size into an image file, seen through the
// given camera, or, as a thumbnail, through the current one.
class CKVRCGetCapture : public CKVRenderCommand
{
    KV_DECLARE_RUNTIME_CLASS(CKVRCGetCapture)
public:
    CKVRCGetCapture(char const* filePath, CKVVec2<unsigned int> const& size, CKVCamera const& camera, bool thumbnail);
    ~CKVRCGetCapture() override;

    ID getID() const override;

    char const* getFilePath() const { return mFilePath.c_str(); }
    CKVVec2<unsigned int> const& getSize() const { return mSize; }
    CKVCamera const& getCamera() const { return mCamera; }
    bool getIsThumbnail() const { return mThumbnail; }

private:
    CKVAString mFilePath;
    CKVVec2<unsigned int> mSize;
    CKVCamera mCamera;
    bool mThumbnail;
};

} // namespace Kelvor
