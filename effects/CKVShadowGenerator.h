#pragma once

#include "effects/CKVSceneGenerator.h"
#include "effects/CKVShadowCascades.h"

#include <osg/Texture2DArray>
#include <osg/Uniform>
#include <osg/observer_ptr>

namespace Kelvor {

class CBGGeode;
class CKVScene;
class KawaseBlurGeometry;

// Shadows of the sun on everything the host marks as a caster: three
// cascades of a variance shadow map, drawn into the layers of one texture
// array in a single pass over the casters, then softened by a Kawase blur.
// The surfaces read the array, the three light matrices and the cascade
// ends from the root's state set, where the generator publishes them while
// shadows are on, with the define that switches the receiving side on.
//
// Casters are the visible host nodes with the shadow render option. The
// pass draws them with the caster programs: plain, instanced (a node whose
// program draws instances) or terrain (a terrain node), whatever program
// the node has itself.
class CKVShadowGenerator : public CKVSceneGenerator
{
public:
    static constexpr unsigned int kCascadeCount = CKVShadowCascades::kCascadeCount;
    // The texture unit of the moments array on the root.
    static constexpr unsigned int kTextureUnit = 15;
    static constexpr float kDefaultIntensity = 0.3f;
    static char const* const kDefine;

    // `root` is what the depth pass draws and where the results are
    // published; `camera` is the main camera. Neither is owned (the root
    // owns the generator). `scene`, which may be null, gives the bounds that
    // narrow the cascades to what is there.
    CKVShadowGenerator(CKVScene* scene, osg::Camera* camera, osg::Group* root);

    char const* className() const override { return "CKVShadowGenerator"; }

    // 0 is off; 1, 2 and 3 (or more) give maps of 1024, 2048 and 4096
    // texels square. Acts only on a change. Switching between off and on
    // sets or removes the define and has the shaders that listen to it
    // recompiled, and then answers true; between two levels that are on
    // only the maps are resized.
    bool setShadowLevel(int level);
    int getShadowLevel() const { return mLevel; }
    static unsigned int mapSize(int level);

    // How light the darkest shadow is: 0 black, higher values lighter.
    void setShadowIntensity(float intensity);
    float getShadowIntensity() const { return mShadowIntensity; }

    // The unit vector towards the sun.
    void setLightDirection(osg::Vec3d const& position);
    // The direction the light travels.
    osg::Vec3d const& getLightDirection() const { return mCascades.getLightDirection(); }

    // The maps' size; the window's size has nothing to do with it. A zero
    // size is ignored.
    void resize(unsigned int width, unsigned int height);
    unsigned int getWidth() const { return mWidth; }
    unsigned int getHeight() const { return mHeight; }

    // While shadows are on: the passes, the maps and the uniforms exist.
    bool isLevelInitialised() const { return mLevelInitialised; }
    PassData* getDepthPass() const { return mDepthPass.get(); }
    PassData* getBlurPass() const { return mBlurPass.get(); }
    osg::Texture2DArray* getMomentsTexture() const { return mMomentsTexture.get(); }
    osg::Texture2DArray* getBlurTexture() const { return mBlurTexture.get(); }
    KawaseBlurGeometry* getBlurGeometry() const { return mBlurGeometry.get(); }
    CKVShadowCascades const& getCascades() const { return mCascades; }

    // Reaches the passes, which are not children.
    void releaseGLObjects(osg::State* state = nullptr) const override;

protected:
    ~CKVShadowGenerator() override;

    bool isEffectEnabled() const override { return mLevelInitialised; }
    void updateFrame(osgUtil::CullVisitor& visitor) override;
    bool acceptsSceneNode(CKVSceneNode const& node, PassData const& pass) const override;
    osg::StateSet* variantFor(CKVSceneNode const& node, PassData& pass) const override;

private:
    enum Variant : unsigned int
    {
        kInstancedVariant = 0,
        kTerrainVariant = 1,
        kVariantCount = 2
    };
    // The caster programs: plain, instanced, terrain.
    static constexpr unsigned int kCasterProgramCount = 3;

    void setUp();
    void tearDown();
    void buildDepthPass();
    void buildBlurPass();
    // The bounds of what the host's graphics model holds; invalid without.
    osg::BoundingBox sceneBox() const;

    bool mLevelInitialised = false;
    CKVScene* mScene;
    osg::observer_ptr<osg::Camera> mCamera;
    osg::observer_ptr<osg::Group> mRoot;
    unsigned int mWidth = 1;
    unsigned int mHeight = 1;
    osg::ref_ptr<PassData> mDepthPass;
    osg::ref_ptr<osg::Texture2DArray> mMomentsTexture;
    osg::ref_ptr<PassData> mBlurPass;
    osg::ref_ptr<osg::Texture2DArray> mBlurTexture;
    osg::ref_ptr<KawaseBlurGeometry> mBlurGeometry;
    // The blur pass's subject, which the pass does not own.
    osg::ref_ptr<CBGGeode> mBlurGeode;
    float mShadowIntensity = kDefaultIntensity;
    osg::ref_ptr<osg::Uniform> mShadowIntensityUniform;
    osg::ref_ptr<osg::Uniform> mShadowTextureUniform;
    osg::ref_ptr<osg::Uniform> mLightViewProjectionUniform;
    osg::ref_ptr<osg::Uniform> mCascadeEndUniform;
    CKVShadowCascades mCascades;
    int mLevel = 0;
    // Kept while shadows are off as well: they are shared through the
    // program manager, and whatever GL objects they have in a context must
    // go when that context closes, which happens through this generator.
    osg::ref_ptr<osg::Program> mCasterPrograms[kCasterProgramCount];
};

} // namespace Kelvor
