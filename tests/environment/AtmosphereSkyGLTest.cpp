// The atmosphere's passes over frames, on a real GL context and without
// any tables (a sky that must draw black, not fail): which pass
// runs in which frame, what storage the light maps get and when, and what
// the scene camera's state carries. Counting is what catches a pass that
// runs every frame when it should stop, or never starts.
#include "environment/CKVAtmosphereSky.h"
#include "environment/IBLGeometry.h"
#include "programs/CKVRenderStateManager.h"
#include "scene/CKVOSGBindlessTexture.h"
#include "scene/KVBindlessHandleUniform.h"
#include "support/GLTest.h"

#include <osg/GLExtensions>
#include <osg/Group>
#include <osg/Texture3D>

#include <gtest/gtest.h>

using namespace Kelvor;

namespace {

class AtmosphereSkyGLTest : public GLTest
{
protected:
    void SetUp() override
    {
        GLTest::SetUp();
        if (IsSkipped() || HasFatalFailure())
            return;
        mPhysicalBefore = CKVRenderStateManager::instance().isPBRInUse();
        CKVRenderStateManager::instance().setPBRInUse(false);
        context().runWithContext([](osg::State& state) { state.setUseVertexAttributeAliasing(true); });
        mSky = new CKVAtmosphereSky(nullptr, context().camera(), CKVAtmosphereSky::Tables());
        mScene = new osg::Group;
        mScene->addChild(mSky.get());
    }

    void TearDown() override
    {
        if (mSky.valid())
            CKVRenderStateManager::instance().setPBRInUse(mPhysicalBefore);
        GLTest::TearDown();
    }

    void frames(int count) { context().renderFrames(mScene.get(), count); }

    // Width of a level of a cube map's +X face as GL holds it; 0 without
    // storage.
    int levelWidth(osg::TextureCubeMap& map, int level)
    {
        GLint width = 0;
        context().runWithContext([&](osg::State& state) {
            osg::Texture::TextureObject* object = map.getTextureObject(state.getContextID());
            if (!object)
                return;
            glBindTexture(GL_TEXTURE_CUBE_MAP, object->id());
            glGetTexLevelParameteriv(GL_TEXTURE_CUBE_MAP_POSITIVE_X, level, GL_TEXTURE_WIDTH, &width);
            glBindTexture(GL_TEXTURE_CUBE_MAP, 0);
        });
        return width;
    }

    osg::ref_ptr<CKVAtmosphereSky> mSky;
    osg::ref_ptr<osg::Group> mScene;
    bool mPhysicalBefore = false;
};

TEST_F(AtmosphereSkyGLTest, LightMapsWaitForAPhysicalMaterialThenConvolveEverySecondFrame)
{
    IBLGeometry const& ibl = *mSky->getIBLGeometry();
    frames(2);
    EXPECT_EQ(ibl.getSkyDrawCount(), 0u) << "the sky is drawn only while its background is shown";

    mSky->setSkyPassEnabled(true);
    frames(3);
    EXPECT_EQ(ibl.getSkyDrawCount(), 3u);
    EXPECT_EQ(ibl.getConvolutionCount(), 0u);
    EXPECT_EQ(levelWidth(*mSky->getEnvironmentMap(), 0), CKVAtmosphereSky::kEnvironmentSize);
    // No storage: samples of the maps read black.
    EXPECT_EQ(levelWidth(*mSky->getIrradianceMap(), 0), 0);
    EXPECT_EQ(levelWidth(*mSky->getPrefilterMap(), 0), 0);

    CKVRenderStateManager::instance().setPBRInUse(true);
    frames(6);
    EXPECT_EQ(ibl.getSkyDrawCount(), 9u);
    EXPECT_EQ(ibl.getConvolutionCount(), 3u);
    EXPECT_EQ(levelWidth(*mSky->getIrradianceMap(), 0), IBLGeometry::kIrradianceSize);
    EXPECT_EQ(levelWidth(*mSky->getPrefilterMap(), 0), IBLGeometry::kPrefilterSize);
    EXPECT_EQ(levelWidth(*mSky->getPrefilterMap(), IBLGeometry::kPrefilterLevels - 1),
              IBLGeometry::kPrefilterSize >> (IBLGeometry::kPrefilterLevels - 1));

    // Another background: the sky and its light stop with it.
    mSky->setSkyPassEnabled(false);
    frames(2);
    EXPECT_EQ(ibl.getSkyDrawCount(), 9u);
    EXPECT_EQ(ibl.getConvolutionCount(), 3u);
}

TEST_F(AtmosphereSkyGLTest, SunColourRunsForFiveFramesAfterEachChangeWhileTheAtmosphereIsOn)
{
    // Off: a change is remembered but drawn only once the atmosphere is on.
    mSky->setUpdateScattering(true);
    frames(3);
    EXPECT_EQ(mSky->getScatteringPassCount(), 0u);
    EXPECT_TRUE(mSky->getUpdateScattering());

    mSky->setAtmosphereEnabled(true);
    osg::StateSet const* scene = context().camera()->getStateSet();
    ASSERT_NE(scene, nullptr);
    EXPECT_EQ(scene->getDefineList().count("_USE_ATMOSPHERE"), 1u);
    EXPECT_EQ(scene->getTextureAttribute(CKVAtmosphereSky::kSunColourUnit, osg::StateAttribute::TEXTURE),
              mSky->getScatteringTexture());
    frames(7);
    EXPECT_EQ(mSky->getScatteringPassCount(), 5u);
    EXPECT_FALSE(mSky->getUpdateScattering());

    // A second change inside a run extends nothing: the run ends five frames
    // after it began.
    mSky->setUpdateScattering(true);
    frames(2);
    mSky->setUpdateScattering(true);
    frames(6);
    EXPECT_EQ(mSky->getScatteringPassCount(), 10u);

    // Turning it off is a change too, and takes the sun colour off the
    // surfaces.
    mSky->setAtmosphereEnabled(false);
    EXPECT_TRUE(mSky->getUpdateScattering());
    EXPECT_EQ(scene->getDefineList().count("_USE_ATMOSPHERE"), 0u);
    EXPECT_EQ(scene->getTextureAttribute(CKVAtmosphereSky::kSunColourUnit, osg::StateAttribute::TEXTURE), nullptr);
    frames(2);
    EXPECT_EQ(mSky->getScatteringPassCount(), 10u);
}

// How the passes reach their textures, on both driver paths: texture units
// where bindless textures are missing (the path drawn here), the table
// handles' block and handle uniforms where they are present. A table in the
// wrong slot of the block gives a sky of the wrong colour on such drivers
// only, and a define on the wrong path fails its program.
TEST_F(AtmosphereSkyGLTest, PassesTakeTheirTexturesThroughUnitsOrHandlesAsTheDriverAllows)
{
    using Sky = CKVAtmosphereSky;
    Sky::Tables tables{new osg::Texture2D, new osg::Texture3D, new osg::Texture2D};
    osg::ref_ptr<osg::Texture2DArray> ground = new osg::Texture2DArray;
    bool const bindlessBefore = CKVRenderStateManager::instance().isBindlessTexture();
    auto handlesOf = [](osg::StateSet const* stateSet) {
        return dynamic_cast<CKVOSGBindlessTexture const*>(
            stateSet->getAttribute(static_cast<osg::StateAttribute::Type>(CKVOSGBindlessTexture::kType)));
    };

    for (bool bindless : {false, true}) {
        SCOPED_TRACE(bindless ? "bindless" : "texture units");
        CKVRenderStateManager::instance().setBindlessTexture(bindless);
        osg::ref_ptr<Sky> sky = new Sky(nullptr, nullptr, tables);
        CKVRenderStateManager::instance().setBindlessTexture(bindlessBefore);
        // A new ground changes the sky, so the sun colour is redrawn.
        sky->setUpdateScattering(false);
        sky->setTerrainTexture(ground.get());
        EXPECT_TRUE(sky->getUpdateScattering());

        osg::StateSet const* const cube = sky->getSkyPass()->getStateSet();
        osg::StateSet const* const sun = sky->getScatteringPass()->getStateSet();
        for (osg::StateSet const* stateSet : {sun, cube}) {
            EXPECT_EQ(stateSet->getDefineList().count("_USE_NOT_BINDLESS_TEXTURE"), bindless ? 0u : 1u);
            osg::StateAttribute const* block =
                stateSet->getAttribute(osg::StateAttribute::UNIFORMBUFFERBINDING, Sky::kAtmosphereBlockBinding);
            EXPECT_EQ(block, bindless ? sky->getAtmosphereBinding() : nullptr);
            auto texture = [&](unsigned int unit) {
                return stateSet->getTextureAttribute(unit, osg::StateAttribute::TEXTURE);
            };
            if (!bindless) {
                EXPECT_EQ(texture(Sky::kTransmittanceUnit), tables.transmittance.get());
                EXPECT_EQ(texture(Sky::kScatteringUnit), tables.scattering.get());
                EXPECT_EQ(texture(Sky::kIrradianceUnit), tables.irradiance.get());
                continue;
            }
            for (unsigned int unit = 0; unit <= Sky::kTerrainUnit; ++unit)
                EXPECT_EQ(texture(unit), nullptr) << unit;
            ASSERT_NE(handlesOf(stateSet), nullptr);
            CKVOSGBindlessTexture::TextureArrayEntry const& entry =
                handlesOf(stateSet)->getTextureArrays().at(Sky::kAtmosphereBlockBinding);
            std::vector<osg::ref_ptr<osg::Texture>> const order = {tables.transmittance, tables.irradiance,
                                                                   tables.scattering};
            EXPECT_EQ(entry.textures, order);
            EXPECT_EQ(entry.handles.get(), sky->getAtmosphereBinding()->getBufferData());
            EXPECT_EQ(sky->getAtmosphereBinding()->getSize(), 3 * 8);
        }

        // The sky pass's own samplers: a unit with its number, or a handle.
        for (char const* name : {"starNoise", "terrainTextureArray"}) {
            SCOPED_TRACE(name);
            osg::Uniform const* uniform = cube->getUniform(name);
            ASSERT_NE(uniform, nullptr);
            int unit = -1;
            if (!bindless) {
                EXPECT_TRUE(uniform->get(unit));
                EXPECT_NE(cube->getTextureAttribute(unit, osg::StateAttribute::TEXTURE), nullptr);
                continue;
            }
            EXPECT_NE(dynamic_cast<KVBindlessHandleUniform const*>(uniform), nullptr);
            EXPECT_EQ(handlesOf(cube)->getTextures().at(name).uniform.get(), uniform);
        }
        osg::StateAttribute const* shownGround =
            bindless ? handlesOf(cube)->getTextures().at("terrainTextureArray").texture.get()
                     : cube->getTextureAttribute(Sky::kTerrainUnit, osg::StateAttribute::TEXTURE);
        EXPECT_EQ(shownGround, ground.get());

        // Without a ground the unit path keeps the sampler on its own unit:
        // at unit 0 it would clash with the transmittance table's sampler.
        sky->setTerrainTexture(nullptr);
        EXPECT_EQ(cube->getTextureAttribute(Sky::kTerrainUnit, osg::StateAttribute::TEXTURE), nullptr);
        EXPECT_EQ(cube->getUniform("terrainTextureArray") != nullptr, !bindless);
    }
}

} // namespace
