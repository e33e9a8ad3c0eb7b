#pragma once

#include <osg/Camera>
#include <osg/Texture2D>
#include <osg/ref_ptr>

namespace Kelvor {

// The textures the scene pass renders into, all at the viewport size:
// colour, view normals for the edge detector, the volumetric light mask and
// depth, and motion vectors once anti-aliasing asks for them. They stay
// attached whether or not their effect is on; the surface shaders write
// the outputs their defines ask for.
class CKVSceneRenderTargets
{
public:
    // A width or height that truncates to 0 gives 100 by 100 until the first
    // resize. `samples` is the window's multisample count.
    CKVSceneRenderTargets(double width, double height, int samples);

    // Attaches colour, silhouette, volumetric light and depth to `camera`.
    void attachTo(osg::Camera& camera) const;
    // Makes the velocity texture (once) and attaches it as colour 1, without
    // multisampling.
    osg::Texture2D* createVelocity(osg::Camera& camera);

    osg::Texture2D* getColorTexture() const { return mColorTexture.get(); }
    osg::Texture2D* getVelocityTexture() const { return mVelocityTexture.get(); }
    osg::Texture2D* getSilhouetteTexture() const { return mSilhouetteTexture.get(); }
    osg::Texture2D* getVolumetricLightTexture() const { return mVolumetricLightTexture.get(); }
    osg::Texture2D* getDepthTexture() const { return mDepthTexture.get(); }
    int getWidth() const { return mWidth; }
    int getHeight() const { return mHeight; }
    int getSamples() const { return mSamples; }

private:
    osg::ref_ptr<osg::Texture2D> makeTarget(GLint internalFormat, GLenum format, GLenum type,
                                            osg::Texture::FilterMode filter) const;

    int mWidth;
    int mHeight;
    int mSamples;
    osg::ref_ptr<osg::Texture2D> mColorTexture;
    osg::ref_ptr<osg::Texture2D> mVelocityTexture;
    osg::ref_ptr<osg::Texture2D> mSilhouetteTexture;
    osg::ref_ptr<osg::Texture2D> mVolumetricLightTexture;
    osg::ref_ptr<osg::Texture2D> mDepthTexture;
};

} // namespace Kelvor
