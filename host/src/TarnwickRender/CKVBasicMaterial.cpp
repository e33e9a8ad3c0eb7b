#include "TarnwickRender/CKVBasicMaterial.h"

#include <cstring>

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS_DYNAMIC(CKVBasicMaterial, CKVSharedObject)

namespace {

template <class T>
int threeWay(T const& a, T const& b)
{
    return a < b ? -1 : (b < a ? 1 : 0);
}

} // namespace

CKVBasicMaterial::CKVBasicMaterial()
    : mRGBA{255, 255, 255, 255},
      mSortTransparency(true),
      mSortTransparencyBin(0),
      mFaceDisplacement(0.0),
      mUseDepthRange(false),
      mDepthNear(0.0f),
      mDepthFar(1.0f),
      mFaceCullMode(kCullNone)
{
}

CKVBasicMaterial::CKVBasicMaterial(CKVBasicMaterial const& other)
    : CKVSharedObject(other),
      mTexture(other.mTexture),
      mSortTransparency(other.mSortTransparency),
      mSortTransparencyBin(other.mSortTransparencyBin),
      mFaceDisplacement(other.mFaceDisplacement),
      mUseDepthRange(other.mUseDepthRange),
      mDepthNear(other.mDepthNear),
      mDepthFar(other.mDepthFar),
      mFaceCullMode(other.mFaceCullMode)
{
    std::memcpy(mRGBA, other.mRGBA, sizeof(mRGBA));
}

CKVBasicMaterial& CKVBasicMaterial::operator=(CKVBasicMaterial const& other)
{
    std::memcpy(mRGBA, other.mRGBA, sizeof(mRGBA));
    mTexture = other.mTexture;
    mSortTransparency = other.mSortTransparency;
    mSortTransparencyBin = other.mSortTransparencyBin;
    mFaceDisplacement = other.mFaceDisplacement;
    mUseDepthRange = other.mUseDepthRange;
    mDepthNear = other.mDepthNear;
    mDepthFar = other.mDepthFar;
    mFaceCullMode = other.mFaceCullMode;
    return *this;
}

CKVBasicMaterial::~CKVBasicMaterial() = default;

CKVBasicMaterial::MaterialType CKVBasicMaterial::getType() const
{
    return kBasic;
}

CKVBasicMaterial* CKVBasicMaterial::clone() const
{
    return new CKVBasicMaterial(*this);
}

int CKVBasicMaterial::compare(CKVBasicMaterial const& other) const
{
    if (&other == this)
        return 0;
    if (int const byType = threeWay(getType(), other.getType()))
        return byType;
    // Equal types are equal classes, so the subclass may read `other` as its own.
    return compareContent(other);
}

int CKVBasicMaterial::compareContent(CKVBasicMaterial const& other) const
{
    if (int const c = std::memcmp(mRGBA, other.mRGBA, sizeof(mRGBA)))
        return c < 0 ? -1 : 1;
    if (int const c = mTexture.compare(other.mTexture.c_str()))
        return c < 0 ? -1 : 1;
    if (int const c = threeWay(mSortTransparency, other.mSortTransparency))
        return c;
    if (int const c = threeWay(mSortTransparencyBin, other.mSortTransparencyBin))
        return c;
    if (int const c = threeWay(mFaceDisplacement, other.mFaceDisplacement))
        return c;
    if (int const c = threeWay(mUseDepthRange, other.mUseDepthRange))
        return c;
    // The range only counts when it is used.
    if (mUseDepthRange) {
        if (int const c = threeWay(mDepthNear, other.mDepthNear))
            return c;
        if (int const c = threeWay(mDepthFar, other.mDepthFar))
            return c;
    }
    return threeWay(mFaceCullMode, other.mFaceCullMode);
}

void CKVBasicMaterial::getProgramParam(CKVProgramParam& param) const
{
    param.setType(CKVProgramParam::kSurface);
    if (mTexture.length() > 0)
        param.addParam(CKVProgramParam::kUseTexture);
    else
        param.removeParam(CKVProgramParam::kUseTexture);
}

void CKVBasicMaterial::getRGBA(unsigned char& r, unsigned char& g, unsigned char& b, unsigned char& a) const
{
    r = mRGBA[0];
    g = mRGBA[1];
    b = mRGBA[2];
    a = mRGBA[3];
}

void CKVBasicMaterial::setRGB(unsigned char r, unsigned char g, unsigned char b)
{
    mRGBA[0] = r;
    mRGBA[1] = g;
    mRGBA[2] = b;
}

void CKVBasicMaterial::setRGBA(unsigned char r, unsigned char g, unsigned char b, unsigned char a)
{
    setRGB(r, g, b);
    mRGBA[3] = a;
}

void CKVBasicMaterial::getDepthRange(bool& use, float& zNear, float& zFar) const
{
    if (!mUseDepthRange)
        return;
    use = true;
    zNear = mDepthNear;
    zFar = mDepthFar;
}

void CKVBasicMaterial::setDepthRange(bool use, float zNear, float zFar)
{
    mUseDepthRange = use;
    mDepthNear = zNear;
    mDepthFar = zFar;
}

} // namespace Kelvor
