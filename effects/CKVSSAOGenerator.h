#pragma once

#include "effects/CKVSceneGenerator.h"
#include "scene/KVRand.h"

#include <osg/Texture2D>
#include <osg/Uniform>
#include <osg/observer_ptr>

namespace Kelvor {

class CBGGeode;

// Screen-space ambient occlusion: darkens the ambient light of surfaces in
// creases and corners. Three passes before the scene pass: the view-space
// positions and normals of the nodes with the occlusion render option, the
// occlusion of each pixel from them, and a blur. The blurred result stands
// on the root's state set, with the define under which the surfaces
// multiply their ambient term by it.
class CKVSSAOGenerator : public CKVSceneGenerator
{
public:
    // The texture unit of the result on the root.
    static constexpr unsigned int kTextureUnit = 5;
    static constexpr int kMaxLevel = 3;
    static char const* const kDefine;

    // `camera` is the main camera, whose viewport gives the size and whose
    // culling settings the geometry pass copies; `root` is what that pass
    // draws and where the result is published. Neither is owned (the root
    // owns the generator).
    CKVSSAOGenerator(osg::Camera* camera, osg::Group* root);

    char const* className() const override { return "CKVSSAOGenerator"; }

    // 0 off, 1 half, 2 full, 3 one and a half times the window's
    // resolution; higher levels are ignored. Acts only on a change.
    // Switching between off and on sets or removes the define and has the
    // shaders that listen to it recompiled, and then answers true; between
    // two levels that are on only the targets are resized, and the kernel
    // and noise stay.
    bool setSSAOLevel(int level);
    int getSSAOLevel() const { return mLevel; }

    // The window's size; the targets follow it by the level. Ignored when
    // either is 0.
    void resize(unsigned int width, unsigned int height);
    unsigned int getWidth() const { return mWidth; }
    unsigned int getHeight() const { return mHeight; }
    // The targets' size at `level` for a window of `width` by `height`.
    static void targetSize(int level, unsigned int width, unsigned int height, unsigned int& targetWidth,
                           unsigned int& targetHeight);

    // While the level is above 0: the passes, the targets and the uniforms
    // exist.
    bool isInitialised() const { return mInitialised; }
    PassData* getGeometryPass() const { return mGeometryPass.get(); }
    PassData* getOcclusionPass() const { return mOcclusionPass.get(); }
    PassData* getBlurPass() const { return mBlurPass.get(); }
    osg::Texture2D* getPositionTexture() const { return mPositionTexture.get(); }
    osg::Texture2D* getNormalTexture() const { return mNormalTexture.get(); }
    osg::Texture2D* getOcclusionTexture() const { return mOcclusionTexture.get(); }
    osg::Texture2D* getBlurTexture() const { return mBlurTexture.get(); }
    osg::Texture2D* getNoiseTexture() const { return mNoiseTexture.get(); }
    osg::Uniform* getKernelUniform() const { return mKernelUniform.get(); }
    osg::Uniform* getNoiseScaleUniform() const { return mNoiseScaleUniform.get(); }

    // Reaches the passes, which are not children.
    void releaseGLObjects(osg::State* state = nullptr) const override;

protected:
    ~CKVSSAOGenerator() override;

    bool isEffectEnabled() const override { return mInitialised && mLevel != 0; }
    bool acceptsSceneNode(CKVSceneNode const& node, PassData const& pass) const override;
    osg::StateSet* variantFor(CKVSceneNode const& node, PassData& pass) const override;

private:
    enum Variant : unsigned int
    {
        kInstancedVariant = 0,
        kVariantCount = 1
    };

    void setUp();
    void tearDown();
    void buildGeometryPass();
    void buildOcclusionPass();
    void buildBlurPass();
    void publish();
    // A pre-render camera into `target` at the window's size.
    void setUpPassCamera(osg::Camera& camera, char const* name, int orderNum, osg::Texture2D* target);

    bool mInitialised = false;
    osg::observer_ptr<osg::Group> mRoot;
    osg::observer_ptr<osg::Camera> mCamera;
    unsigned int mWidth = 1;
    unsigned int mHeight = 1;
    osg::ref_ptr<PassData> mGeometryPass;
    osg::ref_ptr<PassData> mOcclusionPass;
    osg::ref_ptr<PassData> mBlurPass;
    osg::ref_ptr<osg::Texture2D> mPositionTexture;
    osg::ref_ptr<osg::Texture2D> mNormalTexture;
    osg::ref_ptr<osg::Texture2D> mOcclusionTexture;
    osg::ref_ptr<osg::Texture2D> mBlurTexture;
    osg::ref_ptr<osg::Uniform> mNoiseScaleUniform;
    int mLevel = 0;

    osg::ref_ptr<osg::Texture2D> mNoiseTexture;
    osg::ref_ptr<osg::Uniform> mKernelUniform;
    osg::ref_ptr<osg::Uniform> mTextureUniform;
    // The full-screen subjects of the occlusion and blur passes, which the
    // passes do not own.
    osg::ref_ptr<CBGGeode> mOcclusionGeode;
    osg::ref_ptr<CBGGeode> mBlurGeode;
    // Seeded once: each set-up continues the sequence.
    KVRand mRand;
};

} // namespace Kelvor
