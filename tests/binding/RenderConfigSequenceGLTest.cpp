// A sequence of render configurations on a live context: after the first,
// only a switch that changed may move a root define, since every define
// change recompiles the shaders that listen to it.
#include "RenderContextFixture.h"

#include "effects/CKVDOFGenerator.h"
#include "effects/CKVPostProcessNode.h"
#include "effects/CKVSilhouetteGenerator.h"
#include "effects/DOFGeometry.h"
#include "programs/CKVProgramManager.h"

#include "TarnwickRender/CKVRCApplyRenderConfig.h"

#include <set>
#include <string>

using namespace Kelvor;

namespace {

class RenderConfigSequenceGLTest : public RenderContextFixture
{
protected:
    std::set<std::string> rootDefines() const
    {
        std::set<std::string> names;
        if (osg::StateSet const* state = mContext->getRoot()->getStateSet()) {
            for (auto const& define : state->getDefineList())
                names.insert(define.first);
        }
        return names;
    }

    unsigned int defineChanges() const { return mContext->getConfigApplier().getDefineChangeCount(); }

    // Applies through the command road and answers which root defines moved.
    std::set<std::string> applyAndDiff(CKVRenderConfig const& config)
    {
        std::set<std::string> const before = rootDefines();
        kv_shared_ptr<CKVRCApplyRenderConfig> command = new CKVRCApplyRenderConfig(config);
        EXPECT_TRUE(mContext->getRenderCommandCache()->submitAndWait(command.get(), 10000));
        std::set<std::string> const after = rootDefines();
        std::set<std::string> moved;
        for (std::string const& name : before)
            if (!after.count(name))
                moved.insert(name);
        for (std::string const& name : after)
            if (!before.count(name))
                moved.insert(name);
        return moved;
    }
};

using Names = std::set<std::string>;

} // namespace

TEST_F(RenderConfigSequenceGLTest, OnlyTheChangedSwitchMovesItsDefine)
{
    CKVRenderConfig config;
    mScene.setRenderConfig(config);
    ASSERT_NE(start(), nullptr);
    // The axis handle's arrows get their programs in the first frames.
    ASSERT_TRUE(waitForFrames(2));
    std::size_t const programs = CKVProgramManager::instance().getCachedProgramCount();

    unsigned int changes = defineChanges();
    EXPECT_EQ(applyAndDiff(config), Names());
    EXPECT_EQ(defineChanges(), changes) << "an equal configuration changes no define";

    config.setFogUse(true);
    EXPECT_EQ(applyAndDiff(config), Names({"_USE_FOG"}));
    EXPECT_EQ(defineChanges(), changes + 1);
    EXPECT_NE(mContext->getRoot()->getStateSet()->getUniform("FogDensity"), nullptr);

    config.setRainUse(true);
    EXPECT_EQ(applyAndDiff(config), Names({"_USE_WEATHER_RAIN"}));
    EXPECT_EQ(defineChanges(), changes + 2);

    // Snow on surfaces waits for half density; below it nothing moves.
    config.setSnowUse(true);
    config.setSnowDensity(0.2f);
    EXPECT_EQ(applyAndDiff(config), Names());
    config.setSnowDensity(0.7f);
    EXPECT_EQ(applyAndDiff(config), Names({"_USE_WEATHER_SNOW"}));
    config.setSnowUse(false);
    EXPECT_EQ(applyAndDiff(config), Names({"_USE_WEATHER_SNOW"}));
    EXPECT_EQ(defineChanges(), changes + 4);

    config.setRenderStyle(CKVRenderConfig::kWhiteModelWithEdges);
    Names const white = applyAndDiff(config);
    EXPECT_TRUE(white.count("_USE_WHITE_COLOR"));
    EXPECT_TRUE(mContext->getRoot()->getSilhouetteEnabled());

    // Depth of field is a switch; its distances, like the edge colours, are
    // values that reach the effects themselves.
    config.setDOFUse(true);
    config.setDOFNearEnd(0.2f);
    config.setDOFBlurSize(0.1f);
    config.setRenderStyle(CKVRenderConfig::kEdgesOnly);
    config.setRenderStyleEdgeColor(CKVVec4<float>(0.1f, 0.2f, 0.3f, 0.5f));
    Names const dof = applyAndDiff(config);
    EXPECT_TRUE(dof.count("_USE_DOF"));
    EXPECT_TRUE(mContext->getRoot()->getDOFEnabled());
    auto const* edges = static_cast<CKVSilhouetteGenerator*>(mContext->getRoot()->getSilhouetteGenerator());
    EXPECT_TRUE(edges->getEdgeOnly());
    EXPECT_EQ(edges->getEdgeColor(), osg::Vec4f(0.1f, 0.2f, 0.3f, 0.5f));
    DOFGeometry const* blur = static_cast<CKVDOFGenerator*>(mContext->getRoot()->getDOFGenerator())->getDOFGeometry();
    EXPECT_FLOAT_EQ(blur->getNearEnd(), 0.2f);
    EXPECT_FLOAT_EQ(blur->getBlend(), 0.4f);

    // Values that are not switches reach their uniforms without any define.
    changes = defineChanges();
    config.setFogDensity(0.25f);
    config.setLightIntensity(7.0f);
    EXPECT_EQ(applyAndDiff(config), Names());
    EXPECT_EQ(defineChanges(), changes);
    float density = 0.0f;
    mContext->getRoot()->getStateSet()->getUniform("FogDensity")->get(density);
    EXPECT_FLOAT_EQ(density, 0.25f);
    EXPECT_FLOAT_EQ(mContext->getLightInfo().get(0), 7.0f);

    // No program was made for any of this.
    EXPECT_EQ(CKVProgramManager::instance().getCachedProgramCount(), programs);
}

TEST_F(RenderConfigSequenceGLTest, WaterReflectionAndVolumetricLightNeedTheAtmosphereBackground)
{
    CKVRenderConfig config;
    mScene.setRenderConfig(config);
    ASSERT_NE(start(), nullptr);

    CKVBackGroundConfig background;
    background.setBackGroundType(CKVBackGroundConfig::kGradient);
    config.setBackGroundConfig(background);
    config.setWaterReflect(true);
    config.setVolumetricLightUse(true);
    applyAndDiff(config);
    EXPECT_FALSE(mContext->getRenderConfig().getWaterReflect()) << "stored as off";
    EXPECT_FALSE(mContext->getRenderConfig().getVolumetricLightUse());
    EXPECT_FALSE(mContext->getRoot()->getVolumetricLightEnabled());

    // The atmosphere background lets volumetric light through.
    background.setBackGroundType(CKVBackGroundConfig::kAtmosphere);
    config.setBackGroundConfig(background);
    applyAndDiff(config);
    EXPECT_TRUE(mContext->getRenderConfig().getWaterReflect());
    EXPECT_TRUE(mContext->getRoot()->getVolumetricLightEnabled());

    // Colour grading is the root's own switch and makes it take the effect path.
    config.setColorGradingUse(true);
    applyAndDiff(config);
    EXPECT_TRUE(mContext->getRoot()->getColorGradingEnabled());
    EXPECT_TRUE(mContext->getRoot()->isActive());
}
