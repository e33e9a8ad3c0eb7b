// Cascaded shadows on a live render context, driven only by host commands
// and render configurations: boxes and an instanced row of columns on a
// ground plate, captured as a host captures, at the map sizes of the
// levels, with and without the caster option, at the two ends of the
// shadow intensity; and what a level change rebuilds.
#include "scene/LitSceneFixture.h"
#include "scene/SceneShapes.h"

#include "effects/CKVPostProcessNode.h"
#include "effects/CKVShadowGenerator.h"
#include "effects/KawaseBlurGeometry.h"

#include "TarnwickRender/CKVRenderOptionState.h"

#include <vector>

namespace Kelvor {
namespace {

double brightness(osg::Image const& image)
{
    double sum = 0.0;
    for (int y = 0; y < image.t(); ++y)
        for (int x = 0; x < image.s(); ++x)
        {
            osg::Vec4 const c = image.getColor(x, y);
            sum += c.r() + c.g() + c.b();
        }
    return sum / (image.s() * image.t());
}

// The fraction of pixels clearly darker in `shadowed` than in `plain`.
double darkenedFraction(osg::Image const& shadowed, osg::Image const& plain)
{
    // A tenth of full brightness, summed over the three channels.
    float const kClearly = 0.3f;
    int darker = 0;
    for (int y = 0; y < plain.t(); ++y)
        for (int x = 0; x < plain.s(); ++x)
        {
            osg::Vec4 const a = shadowed.getColor(x, y);
            osg::Vec4 const b = plain.getColor(x, y);
            if ((b.r() + b.g() + b.b()) - (a.r() + a.g() + a.b()) > kClearly)
                ++darker;
        }
    return double(darker) / (plain.s() * plain.t());
}

class ShadowGLTest : public LitSceneFixture
{
protected:
    ShadowGLTest() : LitSceneFixture({128, 96, CKVPoint3D(7.0, -11.0, 9.0), CKVPoint3D(0.0, 0.0, 0.0)}) {}

    void configure(CKVRenderConfig& config) override
    {
        // A low sun, so that shadows fall long and wide across the plate.
        config.setLightPosition(CKVVec3<float>(-0.6f, 0.45f, 0.65f));
        config.setLightIntensity(6.0f);
        config.setAmbientIntensity(0.3f);
        config.setShadowLevel(CKVRenderConfig::kLevelLow);
        config.setShadowIntensity(0.3f);
    }

    CKVShadowGenerator* shadow() const { return mContext->getRoot()->getShadowGenerator(); }

    // A node of one basic colour holding `shapes` (the first the part, the
    // others its instances) at `position`; it casts unless told otherwise.
    kv_shared_ptr<CKVSceneNode> addNode(std::vector<kv_shared_ptr<CKVLogicBufferGeometry>> const& shapes,
                                        CKVPoint3D const& position, osg::Vec3ub const& colour, bool casts = true)
    {
        kv_shared_ptr<CKVBasicMaterial> material(new CKVBasicMaterial);
        material->setRGBA(colour.r(), colour.g(), colour.b(), 255);
        CKVProgramParam param;
        if (shapes.size() > 1)
            param.addParam(CKVProgramParam::kUseInstanceMatrix);
        CKVRenderOptionState* options = new CKVRenderOptionState;
        if (!casts)
            options->removeRenderOption(CKVRenderOptionState::kCastShadow);
        mMaterials.push_back(material);
        return LitSceneFixture::addNode(material.get(), shapes, position, param, options);
    }

    void addBox(CKVPoint3D const& position, float sx, float sy, float sz, osg::Vec3ub const& colour,
                bool casts = true)
    {
        addNode({SceneShapes::boxShape(sx, sy, sz)}, position, colour, casts);
    }

    void addGround() { addBox(CKVPoint3D(0, 0, -0.05), 6.0f, 6.0f, 0.05f, osg::Vec3ub(190, 190, 180)); }

    // How much of the picture the current configuration darkens against
    // the same picture with shadows off.
    double shadowedFraction()
    {
        osg::ref_ptr<osg::Image> shadowed = capture();
        CKVRenderConfig::RenderLevel const level = mConfig.getShadowLevel();
        mConfig.setShadowLevel(CKVRenderConfig::kLevelOff);
        applyConfig();
        osg::ref_ptr<osg::Image> plain = capture();
        mConfig.setShadowLevel(level);
        applyConfig();
        if (!shadowed.valid() || !plain.valid())
            return -1.0;
        return darkenedFraction(*shadowed, *plain);
    }

    std::vector<kv_shared_ptr<CKVBasicMaterial>> mMaterials;
};

kv_shared_ptr<CKVLogicBufferGeometry> instanceAt(double x)
{
    kv_shared_ptr<CKVLogicBufferGeometry> instance(new CKVLogicBufferGeometry);
    instance->setInstanceMatrix(CKVMatrix3D::translation(CKVVector3D(x, 0.0, 0.0)));
    return instance;
}

} // namespace

TEST_F(ShadowGLTest, BoxCastsOnThePlateAtTheFirstTwoLevels)
{
    addGround();
    addBox(CKVPoint3D(0, 0, 1.5), 1.0f, 1.0f, 1.5f, osg::Vec3ub(200, 60, 40));
    expectGolden("shadow_box_level1");
    // The box's shadow covers a few percent of the picture.
    EXPECT_GT(shadowedFraction(), 0.03);

    mConfig.setShadowLevel(CKVRenderConfig::kLevelMedium);
    applyConfig();
    EXPECT_EQ(shadow()->getWidth(), 2048u);
    expectGolden("shadow_box_level2");
}

TEST_F(ShadowGLTest, InstancedRowOfColumnsCasts)
{
    addGround();
    addNode({SceneShapes::boxShape(0.3f, 0.3f, 1.8f), instanceAt(-3.0), instanceAt(-1.0), instanceAt(1.0),
             instanceAt(3.0)},
            CKVPoint3D(0, 1.5, 1.8), osg::Vec3ub(90, 110, 200));
    expectGolden("shadow_instanced_columns");
}

// Neither the box without the option nor the plate under it (which casts)
// leaves any mark: the picture is the one without shadows.
TEST_F(ShadowGLTest, NodeWithoutTheCasterOptionCastsNothing)
{
    addGround();
    addBox(CKVPoint3D(0, 0, 1.5), 1.0f, 1.0f, 1.5f, osg::Vec3ub(200, 60, 40), false);
    osg::ref_ptr<osg::Image> shadowed = capture();
    mConfig.setShadowLevel(CKVRenderConfig::kLevelOff);
    applyConfig();
    osg::ref_ptr<osg::Image> plain = capture();
    ASSERT_TRUE(shadowed.valid() && plain.valid());
    ImageCompareResult const same =
        ImageCompare().compare(*shadowed, *plain, ImageTolerance{2, 0.0}, "shadow_no_caster_option");
    EXPECT_TRUE(same.passed) << same.message;
}

TEST_F(ShadowGLTest, IntensityLiftsTheShadowFloor)
{
    addGround();
    addBox(CKVPoint3D(0, 0, 1.5), 1.0f, 1.0f, 1.5f, osg::Vec3ub(200, 60, 40));
    mConfig.setShadowIntensity(0.0f);
    applyConfig();
    osg::ref_ptr<osg::Image> black = capture();
    ASSERT_TRUE(black.valid());
    expectGolden(*black, "shadow_intensity_0");
    mConfig.setShadowIntensity(1.0f);
    applyConfig();
    osg::ref_ptr<osg::Image> light = capture();
    ASSERT_TRUE(light.valid());
    expectGolden(*light, "shadow_intensity_1");
    EXPECT_LT(brightness(*black), brightness(*light));
}

// Between two levels that are on only the maps change size; off and on
// again moves the define, drops and rebuilds the passes and maps.
TEST_F(ShadowGLTest, LevelChangesRebuildOnlyWhatTheyMust)
{
    addGround();
    CKVShadowGenerator* generator = shadow();
    ASSERT_NE(generator, nullptr);
    osg::StateSet const* root = mContext->getRoot()->getStateSet();
    auto hasDefine = [root] { return root->getDefineList().count(CKVShadowGenerator::kDefine) == 1; };
    auto changes = [this] { return mContext->getConfigApplier().getDefineChangeCount(); };
    ASSERT_TRUE(generator->isLevelInitialised());
    EXPECT_TRUE(hasDefine());
    EXPECT_EQ(generator->getNumPasses(), 2u);
    EXPECT_NE(root->getTextureAttribute(CKVShadowGenerator::kTextureUnit, osg::StateAttribute::TEXTURE), nullptr);
    osg::Texture2DArray* moments = generator->getMomentsTexture();

    unsigned int const before = changes();
    mConfig.setShadowLevel(CKVRenderConfig::kLevelMedium);
    applyConfig();
    EXPECT_EQ(changes(), before) << "no shader is rebuilt between two levels";
    EXPECT_EQ(generator->getMomentsTexture(), moments) << "the maps are resized, not made again";
    EXPECT_EQ(moments->getTextureWidth(), 2048);
    EXPECT_EQ(moments->getTextureDepth(), 3);

    mConfig.setShadowLevel(CKVRenderConfig::kLevelOff);
    applyConfig();
    EXPECT_EQ(changes(), before + 1);
    EXPECT_FALSE(hasDefine());
    EXPECT_FALSE(generator->isLevelInitialised());
    EXPECT_EQ(generator->getNumPasses(), 0u);
    EXPECT_EQ(root->getTextureAttribute(CKVShadowGenerator::kTextureUnit, osg::StateAttribute::TEXTURE), nullptr);
    for (char const* name : {"Shadow_Tx", "LightViewProjectionMatrix", "CascadeEndClipSpace", "ShadowIntensity"})
        EXPECT_EQ(root->getUniform(name), nullptr) << name;

    // With volumetric light on (it needs the atmosphere background) the
    // final pass lists the shadow define too.
    CKVBackGroundConfig background = mConfig.getBackGroundConfig();
    background.setBackGroundType(CKVBackGroundConfig::kAtmosphere);
    mConfig.setBackGroundConfig(background);
    mConfig.setVolumetricLightUse(true);
    applyConfig();
    EXPECT_EQ(mContext->getRoot()->getDefinesText().find(CKVShadowGenerator::kDefine), std::string::npos);
    mConfig.setShadowLevel(CKVRenderConfig::kLevelLow);
    applyConfig();
    EXPECT_EQ(changes(), before + 2);
    EXPECT_TRUE(hasDefine());
    EXPECT_EQ(generator->getNumPasses(), 2u);
    EXPECT_EQ(generator->getWidth(), 1024u);
    EXPECT_NE(mContext->getRoot()->getDefinesText().find(CKVShadowGenerator::kDefine), std::string::npos);

    // The root now draws the scene through its own targets: the shadows
    // still come first and reach the picture.
    ASSERT_TRUE(mContext->getRoot()->isActive());
    addBox(CKVPoint3D(0, 0, 1.5), 1.0f, 1.0f, 1.5f, osg::Vec3ub(200, 60, 40));
    EXPECT_GT(shadowedFraction(), 0.03);
}

// The largest maps: three layers of 4096 by 4096, two of them 64-bit
// moments, allocated and drawn into in one frame.
TEST_F(ShadowGLTest, HighestLevelAllocatesAndDraws)
{
    addGround();
    addBox(CKVPoint3D(0, 0, 1.5), 1.0f, 1.0f, 1.5f, osg::Vec3ub(200, 60, 40));
    mConfig.setShadowLevel(CKVRenderConfig::kLevelHigh);
    applyConfig();
    osg::ref_ptr<osg::Image> image = capture();
    ASSERT_TRUE(image.valid());
    CKVShadowGenerator* generator = shadow();
    EXPECT_EQ(generator->getWidth(), 4096u);
    int allocated = 0;
    ASSERT_TRUE(tickWith([&](CKVRenderContext* context) {
        unsigned int const id =
            static_cast<CKVRenderContextX11Imp*>(context)->getMainCamera()->getGraphicsContext()->getState()->getContextID();
        osg::Texture::TextureObject const* object = generator->getMomentsTexture()->getTextureObject(id);
        allocated = object ? object->_profile._width : 0;
        return true;
    }));
    EXPECT_EQ(allocated, 4096);
    EXPECT_GT(generator->getBlurGeometry()->getStepCount(), 0u);

    mConfig.setShadowLevel(CKVRenderConfig::kLevelOff);
    applyConfig();
    osg::ref_ptr<osg::Image> plain = capture();
    ASSERT_TRUE(plain.valid());
    EXPECT_GT(darkenedFraction(*image, *plain), 0.03) << "the box casts at the highest level too";

    // The maps go with the context: the generator and its passes hold the
    // root that holds them only weakly.
    mConfig.setShadowLevel(CKVRenderConfig::kLevelHigh);
    applyConfig();
    osg::observer_ptr<CKVShadowGenerator> watched(generator);
    mContext->destroy();
    CKVRenderContext* context = mContext;
    mContext = nullptr;
    EXPECT_TRUE(CKVRenderCallback::destroyRenderContext(context));
    EXPECT_FALSE(watched.valid());
}

} // namespace Kelvor
