#include "effects/CKVSceneRenderTargets.h"

namespace Kelvor {

namespace {

// Stands in for a window that has no size yet; the first resize replaces it.
constexpr int kFallbackSize = 100;

} // namespace

CKVSceneRenderTargets::CKVSceneRenderTargets(double width, double height, int samples)
    : mWidth(static_cast<int>(width))
    , mHeight(static_cast<int>(height))
    , mSamples(samples)
{
    if (mWidth == 0 || mHeight == 0)
    {
        mWidth = kFallbackSize;
        mHeight = kFallbackSize;
    }
    mColorTexture = makeTarget(GL_RGB, GL_RGB, GL_UNSIGNED_BYTE, osg::Texture::NEAREST);
    mSilhouetteTexture = makeTarget(GL_RGB, GL_RGB, GL_UNSIGNED_BYTE, osg::Texture::NEAREST);
    mVolumetricLightTexture = makeTarget(GL_RGB, GL_RGB, GL_UNSIGNED_BYTE, osg::Texture::LINEAR);
    mDepthTexture = makeTarget(GL_DEPTH_COMPONENT24, GL_DEPTH_COMPONENT, GL_UNSIGNED_INT, osg::Texture::NEAREST);
}

osg::ref_ptr<osg::Texture2D> CKVSceneRenderTargets::makeTarget(GLint internalFormat, GLenum format, GLenum type,
                                                               osg::Texture::FilterMode filter) const
{
    osg::ref_ptr<osg::Texture2D> texture = new osg::Texture2D;
    texture->setTextureSize(mWidth, mHeight);
    texture->setInternalFormat(internalFormat);
    texture->setSourceFormat(format);
    texture->setSourceType(type);
    texture->setFilter(osg::Texture::MIN_FILTER, filter);
    texture->setFilter(osg::Texture::MAG_FILTER, filter);
    texture->setWrap(osg::Texture::WRAP_S, osg::Texture::CLAMP_TO_EDGE);
    texture->setWrap(osg::Texture::WRAP_T, osg::Texture::CLAMP_TO_EDGE);
    return texture;
}

void CKVSceneRenderTargets::attachTo(osg::Camera& camera) const
{
    unsigned int const samples = static_cast<unsigned int>(mSamples > 0 ? mSamples : 0);
    camera.attach(osg::Camera::COLOR_BUFFER0, mColorTexture.get(), 0, 0, false, samples);
    camera.attach(osg::Camera::COLOR_BUFFER2, mSilhouetteTexture.get(), 0, 0, false, samples);
    camera.attach(osg::Camera::COLOR_BUFFER3, mVolumetricLightTexture.get(), 0, 0, false, samples);
    camera.attach(osg::Camera::DEPTH_BUFFER, mDepthTexture.get(), 0, 0, false, samples);
}

osg::Texture2D* CKVSceneRenderTargets::createVelocity(osg::Camera& camera)
{
    if (!mVelocityTexture.valid())
    {
        // Sized like the others, which may have been resized since.
        osg::Texture2D const* colour = mColorTexture.get();
        mVelocityTexture = makeTarget(GL_RG16F, GL_RG, GL_HALF_FLOAT, osg::Texture::NEAREST);
        mVelocityTexture->setTextureSize(colour->getTextureWidth(), colour->getTextureHeight());
        camera.attach(osg::Camera::COLOR_BUFFER1, mVelocityTexture.get());
    }
    return mVelocityTexture.get();
}

} // namespace Kelvor
