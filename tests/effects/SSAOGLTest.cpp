// Ambient occlusion on a live render context, driven by host commands and
// render configurations: what the levels build and resize, the occlusion
// read back from its target for a crease between two planes, and the lit
// picture. The sample radius is fixed in scene units (250), so the scene is
// a hall-sized floor and wall, a few kilometres across.
#include "scene/LitSceneFixture.h"
#include "scene/SceneShapes.h"

#include "effects/CKVPostProcessNode.h"
#include "effects/CKVSSAOGenerator.h"
#include "effects/CKVSSAOKernel.h"
#include "effects/CKVShadowGenerator.h"
#include "scene/KVRand.h"

#include "TarnwickRender/CKVRCSetViewPort.h"
#include "TarnwickRender/CKVRenderOptionState.h"

#include <osg/GL>

#include <algorithm>
#include <vector>

namespace Kelvor {
namespace {

class SSAOGLTest : public LitSceneFixture
{
protected:
    // By default the window's own size, so that a capture renders the
    // passes as the window does and the targets keep what the last frame
    // drew.
    explicit SSAOGLTest(unsigned int width = kWidth, unsigned int height = kHeight)
        : LitSceneFixture({width, height, CKVPoint3D(0.0, -1400.0, 2600.0), CKVPoint3D(0.0, 300.0, 0.0)})
    {
    }

    void configure(CKVRenderConfig& config) override
    {
        // Mostly ambient light, which is what the occlusion darkens.
        config.setLightPosition(CKVVec3<float>(-0.3f, -0.4f, 0.85f));
        config.setLightIntensity(0.6f);
        config.setAmbientIntensity(1.0f);
        config.setSSAOLevel(CKVRenderConfig::kLevelMedium);
    }

    void SetUp() override
    {
        LitSceneFixture::SetUp();
        if (IsSkipped() || HasFatalFailure())
            return;
        mCamera.setNearFar(10.0, 20000.0);
        send(new CKVRCApplyCamera(mCamera));
    }

    CKVSSAOGenerator* ssao() const { return mContext->getRoot()->getSSAOGenerator(); }

    void addBox(CKVPoint3D const& position, float sx, float sy, float sz, osg::Vec3ub const& colour,
                bool occludes = true)
    {
        kv_shared_ptr<CKVBasicMaterial> material(new CKVBasicMaterial);
        material->setRGBA(colour.r(), colour.g(), colour.b(), 255);
        CKVRenderOptionState* options = new CKVRenderOptionState;
        if (!occludes)
            options->removeRenderOption(CKVRenderOptionState::kAmbientOcclusion);
        mMaterials.push_back(material);
        addNode(material.get(), {SceneShapes::boxShape(sx, sy, sz)}, position, CKVProgramParam(), options);
    }

    // A floor that fills the view, its top at z = 0.
    void addFloor() { addBox(CKVPoint3D(0, 0, -10), 6000.0f, 6000.0f, 10.0f, osg::Vec3ub(175, 180, 165)); }
    // A wall across the floor; its front face at y = 380 meets the floor in
    // a crease at the middle of the picture.
    void addWall(bool occludes = true)
    {
        addBox(CKVPoint3D(0, 420, 600), 6000.0f, 40.0f, 600.0f, osg::Vec3ub(225, 225, 230), occludes);
    }

    // The red channel of the occlusion target as the last frame left it,
    // row 0 at the bottom.
    std::vector<float> readOcclusion(unsigned int& width, unsigned int& height)
    {
        for (int i = 0; i < 2; ++i)
            mContext->onTick(++mTickMs);
        std::vector<float> values;
        osg::Texture2D* texture = ssao()->getOcclusionTexture();
        width = static_cast<unsigned int>(texture->getTextureWidth());
        height = static_cast<unsigned int>(texture->getTextureHeight());
        EXPECT_TRUE(tickWith([&](CKVRenderContext* context) {
            osg::State* state =
                static_cast<CKVRenderContextX11Imp*>(context)->getMainCamera()->getGraphicsContext()->getState();
            osg::Texture::TextureObject* object = texture->getTextureObject(state->getContextID());
            if (!object)
                return false;
            values.resize(std::size_t(width) * height);
            // Behind the state's back: the binding is put back as it was.
            GLint bound = 0;
            glGetIntegerv(GL_TEXTURE_BINDING_2D, &bound);
            glBindTexture(GL_TEXTURE_2D, object->id());
            glGetTexImage(GL_TEXTURE_2D, 0, GL_RED, GL_FLOAT, values.data());
            glBindTexture(GL_TEXTURE_2D, static_cast<GLuint>(bound));
            return true;
        }));
        return values;
    }

    std::vector<kv_shared_ptr<CKVBasicMaterial>> mMaterials;
};

// The mean occlusion over a band of rows, `from` and `to` as fractions of
// the height from the bottom, away from the left and right edges.
float bandMean(std::vector<float> const& values, unsigned int width, unsigned int height, float from, float to)
{
    double sum = 0.0;
    unsigned int count = 0;
    for (unsigned int y = static_cast<unsigned int>(from * height); y < static_cast<unsigned int>(to * height); ++y)
        for (unsigned int x = width / 4; x < width * 3 / 4; ++x, ++count)
            sum += values[std::size_t(y) * width + x];
    return count ? static_cast<float>(sum / count) : -1.0f;
}

} // namespace

// Between two levels that are on only the targets change size: no shader
// is rebuilt, the kernel and the noise stay; half resolution rounds an odd
// window down. Off drops everything the generator published.
TEST_F(SSAOGLTest, LevelChangesResizeAndKeepTheKernel)
{
    addFloor();
    CKVSSAOGenerator* generator = ssao();
    ASSERT_NE(generator, nullptr);
    osg::StateSet const* root = mContext->getRoot()->getStateSet();
    auto hasDefine = [root] { return root->getDefineList().count(CKVSSAOGenerator::kDefine) == 1; };
    auto changes = [this] { return mContext->getConfigApplier().getDefineChangeCount(); };
    ASSERT_TRUE(generator->isInitialised());
    EXPECT_TRUE(hasDefine());
    EXPECT_EQ(generator->getNumPasses(), 3u);
    EXPECT_EQ(root->getTextureAttribute(CKVSSAOGenerator::kTextureUnit, osg::StateAttribute::TEXTURE),
              generator->getBlurTexture());
    int unit = -1;
    ASSERT_NE(root->getUniform("SSAO_Tx"), nullptr);
    root->getUniform("SSAO_Tx")->get(unit);
    EXPECT_EQ(unit, 5);
    // Right after the shadows among the root's children.
    osg::Group const* rootNode = mContext->getRoot();
    EXPECT_EQ(rootNode->getChildIndex(generator), rootNode->getChildIndex(mContext->getRoot()->getShadowGenerator()) + 1);

    send(new CKVRCSetViewPort(129, 97));
    mConfig.setSSAOLevel(CKVRenderConfig::kLevelHigh);
    applyConfig();
    osg::Uniform* kernel = generator->getKernelUniform();
    osg::Texture2D* noise = generator->getNoiseTexture();
    std::vector<osg::Vec3f> before(kernel->getNumElements());
    for (unsigned int i = 0; i < before.size(); ++i)
        kernel->getElement(i, before[i]);
    unsigned int const changesBefore = changes();
    KVRand platformDefault;
    EXPECT_EQ(before, CKVSSAOKernel::makeKernel(platformDefault)) << "the first set-up draws from seed 1";

    struct Step
    {
        CKVRenderConfig::RenderLevel level;
        int width, height;
    };
    // 129 * 1.5 = 193.5 and 97 * 1.5 = 145.5 truncate; 129 / 2 and 97 / 2
    // round down.
    for (Step const& step : {Step{CKVRenderConfig::kLevelLow, 64, 48}, Step{CKVRenderConfig::kLevelHigh, 193, 145},
                             Step{CKVRenderConfig::kLevelMedium, 129, 97}, Step{CKVRenderConfig::kLevelLow, 64, 48}})
    {
        mConfig.setSSAOLevel(step.level);
        applyConfig();
        SCOPED_TRACE(step.level);
        for (auto* pass : {generator->getGeometryPass(), generator->getOcclusionPass(), generator->getBlurPass()})
        {
            osg::Viewport const* viewport = pass->getCamera()->getViewport();
            EXPECT_EQ(osg::Vec2(viewport->width(), viewport->height()), osg::Vec2(step.width, step.height));
        }
        EXPECT_EQ(generator->getBlurTexture()->getTextureHeight(), step.height);
        osg::Vec2f scale;
        generator->getNoiseScaleUniform()->get(scale);
        EXPECT_EQ(scale, osg::Vec2f(step.width * 0.25f, step.height * 0.25f));
    }
    // A frame at half size draws without complaint.
    osg::ref_ptr<osg::Image> image = capture();
    EXPECT_TRUE(image.valid());

    EXPECT_EQ(changes(), changesBefore) << "no shader is rebuilt between two levels";
    EXPECT_EQ(generator->getKernelUniform(), kernel);
    EXPECT_EQ(generator->getNoiseTexture(), noise);
    for (unsigned int i = 0; i < before.size(); ++i)
    {
        osg::Vec3f now;
        kernel->getElement(i, now);
        EXPECT_EQ(now, before[i]) << i;
    }

    // Levels past the highest are ignored.
    mConfig.setSSAOLevel(static_cast<CKVRenderConfig::RenderLevel>(4));
    applyConfig();
    EXPECT_EQ(generator->getSSAOLevel(), 1);

    mConfig.setSSAOLevel(CKVRenderConfig::kLevelOff);
    applyConfig();
    EXPECT_EQ(changes(), changesBefore + 1);
    EXPECT_FALSE(hasDefine());
    EXPECT_FALSE(generator->isInitialised());
    EXPECT_EQ(generator->getNumPasses(), 0u);
    EXPECT_EQ(root->getTextureAttribute(CKVSSAOGenerator::kTextureUnit, osg::StateAttribute::TEXTURE), nullptr);
    EXPECT_EQ(root->getUniform("SSAO_Tx"), nullptr);
    // The surfaces still draw, without the occlusion.
    EXPECT_TRUE(capture().valid());
}

// Where the wall meets the floor the hemisphere over the floor reaches into
// the wall: the crease is darker than the open floor in front of it. A wall
// without the occlusion option is not in the position map at all, so the
// occlusion is the one of the bare floor.
TEST_F(SSAOGLTest, CreaseIsDarkerThanTheOpenFloorOnlyWithTheOption)
{
    addFloor();
    unsigned int width = 0, height = 0;
    std::vector<float> const bare = readOcclusion(width, height);
    ASSERT_EQ(bare.size(), std::size_t(kWidth) * kHeight);

    addWall(false);
    std::vector<float> const withoutOption = readOcclusion(width, height);
    ASSERT_EQ(withoutOption.size(), bare.size());
    for (std::size_t i = 0; i < bare.size(); ++i)
        ASSERT_NEAR(withoutOption[i], bare[i], 1e-5f) << "texel " << i;

    addWall(true);
    std::vector<float> const withWall = readOcclusion(width, height);
    ASSERT_EQ(withWall.size(), bare.size());
    float const openFloor = bandMean(withWall, width, height, 0.05f, 0.25f);
    float const bareFloor = bandMean(bare, width, height, 0.05f, 0.25f);
    // The crease: the bottom of the wall, a little above the picture's
    // middle from this camera.
    float darkest = 1.0f;
    for (float row = 0.3f; row < 0.9f; row += 0.05f)
        darkest = std::min(darkest, bandMean(withWall, width, height, row, row + 0.05f));
    EXPECT_GT(openFloor, 0.9f);
    EXPECT_NEAR(openFloor, bareFloor, 0.05f) << "the wall does not reach the near floor";
    EXPECT_LT(darkest, openFloor - 0.2f);
}

// A picture larger than the window: the passes follow the capture's size.
class SSAOPictureGLTest : public SSAOGLTest
{
protected:
    SSAOPictureGLTest() : SSAOGLTest(192, 128) {}
};

// The floor, the wall and a pillar before it: the surfaces darken their
// ambient light in every crease.
TEST_F(SSAOPictureGLTest, CreasesDarkenTheLitPicture)
{
    addFloor();
    addWall(true);
    addBox(CKVPoint3D(-500, 0, 300), 150.0f, 150.0f, 300.0f, osg::Vec3ub(190, 120, 90));
    expectGolden("ssao_creases");
}

} // namespace Kelvor
