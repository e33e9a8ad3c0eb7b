// The atmosphere as the render configuration steers it, through host
// commands only: its switch, the light, the atmosphere background and the
// terrain height must all reach the object that draws the sky.
#include "RenderContextFixture.h"

#include "effects/CKVPostProcessNode.h"
#include "environment/CKVAtmosphereSky.h"
#include "environment/IBLGeometry.h"

#include "TarnwickRender/CKVRCApplyRenderConfig.h"

using namespace Kelvor;

namespace {

class RenderConfigAtmosphereGLTest : public RenderContextFixture
{
protected:
    bool apply(CKVRenderConfig const& config)
    {
        kv_shared_ptr<CKVRCApplyRenderConfig> command = new CKVRCApplyRenderConfig(config);
        bool const done = mContext->getRenderCommandCache()->submitAndWait(command.get(), 10000);
        return done && waitForFrames(mCounter->frames() + 8);
    }

    static CKVRenderConfig config(int backgroundType, bool atmosphere, CKVVec3<float> const& light)
    {
        CKVRenderConfig result;
        CKVBackGroundConfig background;
        background.setBackGroundType(static_cast<CKVBackGroundConfig::BackGroundType>(backgroundType));
        result.setBackGroundConfig(background);
        result.setAtmosphericScattteringUse(atmosphere);
        result.setLightPosition(light);
        return result;
    }

    CKVAtmosphereSky* sky() const { return mContext->getAtmosphere().getSky(); }
    bool rootHasAtmosphereDefine() const
    {
        return mContext->getRoot()->getOrCreateStateSet()->getDefineList().count("_USE_ATMOSPHERE") == 1;
    }
};

TEST_F(RenderConfigAtmosphereGLTest, SwitchLightAndBackgroundReachTheAtmosphere)
{
    ASSERT_NE(start(), nullptr);
    ASSERT_NE(sky(), nullptr);
    // The root holds it too: that is where the water and terrain materials
    // look for the sky they reflect.
    EXPECT_EQ(mContext->getRoot()->getAtmosphere(), mContext->getAtmosphere().getNode());
    CKVVec3<float> const noon(0.0f, -0.3f, 1.0f);
    CKVVec3<float> const evening(-1.0f, 0.0f, 0.05f);

    // The atmosphere background: the sky cube is drawn each frame and is
    // what the sky box shows.
    ASSERT_TRUE(apply(config(CKVBackGroundConfig::kAtmosphere, true, noon)));
    EXPECT_TRUE(sky()->getAtmosphereEnabled());
    EXPECT_TRUE(rootHasAtmosphereDefine());
    EXPECT_TRUE(sky()->getSkyPassEnabled());
    CKVBackGroundSkyBox* skyBox = mContext->getConfigApplier().getBackGrounds().getSkyBoxBackGround();
    ASSERT_NE(skyBox, nullptr);
    EXPECT_TRUE(skyBox->getAtmosphereMode());
    EXPECT_EQ(skyBox->getNode()->getStateSet()->getTextureAttribute(CKVBackGroundSkyBox::kSkyUnit,
                                                                    osg::StateAttribute::TEXTURE),
              sky()->getEnvironmentMap());
    unsigned int const skyDraws = sky()->getIBLGeometry()->getSkyDrawCount();
    EXPECT_GT(skyDraws, 0u);

    // A new light alone redraws the sun colour for its five frames.
    unsigned int const sunRuns = sky()->getScatteringPassCount();
    ASSERT_TRUE(apply(config(CKVBackGroundConfig::kAtmosphere, true, evening)));
    EXPECT_EQ(sky()->getScatteringPassCount(), sunRuns + CKVAtmosphereSky::kScatteringFrames);

    // Another background keeps the sky cube up to date (reflections and the
    // light maps still read it); the switch off takes the define away.
    ASSERT_TRUE(apply(config(CKVBackGroundConfig::kGradient, false, evening)));
    EXPECT_FALSE(sky()->getAtmosphereEnabled());
    EXPECT_FALSE(rootHasAtmosphereDefine());
    EXPECT_TRUE(sky()->getSkyPassEnabled());
    EXPECT_GT(sky()->getIBLGeometry()->getSkyDrawCount(), skyDraws);

    // The same configuration again moves no define.
    unsigned int const defineChanges = mContext->getConfigApplier().getDefineChangeCount();
    ASSERT_TRUE(apply(config(CKVBackGroundConfig::kGradient, false, evening)));
    EXPECT_EQ(mContext->getConfigApplier().getDefineChangeCount(), defineChanges);

    EXPECT_TRUE(mContext->setTerrainHeight(12.5f));
    float height = 0.0f;
    sky()->getTerrainHeightUniform()->get(height);
    EXPECT_FLOAT_EQ(height, 12.5f);
}

} // namespace
