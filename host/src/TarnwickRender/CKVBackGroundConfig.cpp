#include "TarnwickRender/CKVBackGroundConfig.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS_DYNAMIC(CKVBackGroundConfig, CKVObject)

// A light grey reads well behind both dark and light models; the gradient
// defaults run from a pale sky blue down to that grey.
CKVBackGroundConfig::CKVBackGroundConfig()
    : mType(kSolidColor),
      mColor(0.75, 0.75, 0.75),
      mGradientTop(0.62, 0.74, 0.88),
      mGradientBottom(0.75, 0.75, 0.75)
{
}

CKVBackGroundConfig::~CKVBackGroundConfig() = default;

void CKVBackGroundConfig::getGradientBackGround(CKVPoint3D& top, CKVPoint3D& bottom) const
{
    top = mGradientTop;
    bottom = mGradientBottom;
}

void CKVBackGroundConfig::setGradientBackGround(CKVPoint3D const& top, CKVPoint3D const& bottom)
{
    mGradientTop = top;
    mGradientBottom = bottom;
}

CKVAString CKVBackGroundConfig::getSingleSkyBoxPath(SkyBoxFace face) const
{
    if (face < kPositiveX || face >= kFaceCount)
        return CKVAString();
    return mFacePaths[face];
}

bool CKVBackGroundConfig::setSingleSkyBoxPath(SkyBoxFace face, char const* path)
{
    if (face < kPositiveX || face >= kFaceCount)
        return false;
    mFacePaths[face] = path;
    return true;
}

bool CKVBackGroundConfig::operator==(CKVBackGroundConfig const& other) const
{
    if (mType != other.mType || mColor != other.mColor || mGradientTop != other.mGradientTop ||
        mGradientBottom != other.mGradientBottom || mCubeMapPath != other.mCubeMapPath)
        return false;
    for (int i = 0; i < kFaceCount; ++i) {
        if (mFacePaths[i] != other.mFacePaths[i])
            return false;
    }
    return true;
}

} // namespace Kelvor
