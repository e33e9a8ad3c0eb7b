// Colours read back from the atmosphere's targets with the generated tables:
// the sun colour texel and texels of the sky cube. These catch a sky whose
// scattering is inverted or lost (no blue zenith), a sun colour that does
// not follow the sun down, the day/night branch off by one comparison, and
// a sky terrain that shows ground from below.
#include "binding/CKVUniformBlock.h"
#include "environment/CKVAtmosphereSky.h"
#include "environment/CKVAtmosphericScatttering.h"
#include "support/GLTest.h"

#include "TarnwickCommon/Common.h"

#include <osg/Group>
#include <osg/Texture2DArray>

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

using namespace Kelvor;

namespace {

// LightInfo floats.
constexpr unsigned int kIntensity = 0;
constexpr unsigned int kDirection = 4;
constexpr unsigned int kLightColour = 8;
constexpr unsigned int kAmbientColour = 12;
constexpr int kFace = CKVAtmosphereSky::kEnvironmentSize;

class AtmosphereColoursGLTest : public GLTest
{
protected:
    void SetUp() override
    {
        GLTest::SetUp();
        if (IsSkipped() || HasFatalFailure())
            return;
        CKVAString directory;
        Common::getResourceDirectory(directory);
        if (!Common::checkFile((std::string(directory.c_str()) + "/skybox/transmittance_texture.data").c_str()))
            GTEST_SKIP() << "the atmosphere tables have not been generated";
        context().runWithContext([](osg::State& state) { state.setUseVertexAttributeAliasing(true); });

        mLight = CKVUniformBlock(2, 16);
        float const white[3] = {1.0f, 1.0f, 1.0f};
        mLight.set(kIntensity, 9.0f);
        mLight.set(kLightColour, white, 3);
        mLight.set(kAmbientColour, white, 3);
        osg::StateSet* scene = context().camera()->getOrCreateStateSet();
        scene->setAttribute(mLight.getBinding());
        mCameraPosition = new osg::Uniform("camPos_W", osg::Vec3f(0.0f, 0.0f, 2.0f));
        scene->addUniform(mCameraPosition.get());

        mAtmosphere = new CKVAtmosphericScatttering(mLight.getBinding(), context().camera());
        mAtmosphere->setAtmosphereEnabled(true);
        mAtmosphere->setSkyPassEnabled(true);
        mScene = new osg::Group;
        mScene->addChild(mAtmosphere.get());
    }

    // Sets the light and draws until the sun colour has settled.
    void drawWithLight(osg::Vec3f const& direction)
    {
        mLight.set(kDirection, direction.ptr(), 3);
        mAtmosphere->setUpdateScattering(true);
        context().renderFrames(mScene.get(), CKVAtmosphereSky::kScatteringFrames + 1);
    }

    osg::Vec3f sunColour()
    {
        osg::Vec3f colour;
        context().runWithContext([&](osg::State& state) {
            osg::Texture::TextureObject* object =
                mAtmosphere->getSky()->getScatteringTexture()->getTextureObject(state.getContextID());
            ASSERT_NE(object, nullptr);
            glBindTexture(GL_TEXTURE_2D, object->id());
            glGetTexImage(GL_TEXTURE_2D, 0, GL_RGB, GL_FLOAT, colour.ptr());
            glBindTexture(GL_TEXTURE_2D, 0);
        });
        return colour;
    }

    // The sky cube's texel seen in `direction`, by GL's face selection.
    osg::Vec3f skyTexel(osg::Vec3f const& direction)
    {
        float const ax = std::abs(direction.x());
        float const ay = std::abs(direction.y());
        float const az = std::abs(direction.z());
        unsigned int face = 0;
        float s = 0.0f;
        float t = 0.0f;
        if (ax >= ay && ax >= az) {
            face = direction.x() > 0 ? 0 : 1;
            s = (direction.x() > 0 ? -direction.z() : direction.z()) / ax;
            t = -direction.y() / ax;
        } else if (ay >= az) {
            face = direction.y() > 0 ? 2 : 3;
            s = direction.x() / ay;
            t = (direction.y() > 0 ? direction.z() : -direction.z()) / ay;
        } else {
            face = direction.z() > 0 ? 4 : 5;
            s = (direction.z() > 0 ? direction.x() : -direction.x()) / az;
            t = -direction.y() / az;
        }
        std::vector<float> texels(kFace * kFace * 3);
        context().runWithContext([&](osg::State& state) {
            osg::Texture::TextureObject* object =
                mAtmosphere->getEnvironmentMap()->getTextureObject(state.getContextID());
            ASSERT_NE(object, nullptr);
            glBindTexture(GL_TEXTURE_CUBE_MAP, object->id());
            glGetTexImage(GL_TEXTURE_CUBE_MAP_POSITIVE_X + face, 0, GL_RGB, GL_FLOAT, texels.data());
            glBindTexture(GL_TEXTURE_CUBE_MAP, 0);
        });
        int const x = std::min(kFace - 1, static_cast<int>((s * 0.5f + 0.5f) * kFace));
        int const y = std::min(kFace - 1, static_cast<int>((t * 0.5f + 0.5f) * kFace));
        float const* texel = &texels[(y * kFace + x) * 3];
        return osg::Vec3f(texel[0], texel[1], texel[2]);
    }

    static osg::Vec3f sunAt(float elevationDegrees)
    {
        float const e = osg::DegreesToRadians(elevationDegrees);
        return osg::Vec3f(std::cos(e), 0.0f, std::sin(e));
    }

    CKVUniformBlock mLight;
    osg::ref_ptr<osg::Uniform> mCameraPosition;
    osg::ref_ptr<CKVAtmosphericScatttering> mAtmosphere;
    osg::ref_ptr<osg::Group> mScene;
};

TEST_F(AtmosphereColoursGLTest, NoonSkyIsBluestOverheadAndTheSunReddensAsItSets)
{
    // Noon near the equator: the sun stands almost overhead, where the
    // lookup's sun-angle axis gives the sky its daylight.
    drawWithLight(sunAt(89.5f));
    osg::Vec3f const noonSun = sunColour();
    osg::Vec3f const high = skyTexel(osg::Vec3f(-0.766f, 0.0f, 0.643f));
    osg::Vec3f const horizon = skyTexel(osg::Vec3f(-0.999f, 0.0f, 0.035f));
    EXPECT_GT(high.z(), high.x());
    EXPECT_GT(high.z() / high.x(), horizon.z() / horizon.x())
        << "high " << high.x() << " " << high.z() << ", horizon " << horizon.x() << " " << horizon.z();

    drawWithLight(sunAt(2.0f));
    osg::Vec3f const lowSun = sunColour();
    EXPECT_GT(lowSun.x() / lowSun.z(), noonSun.x() / noonSun.z())
        << "noon " << noonSun.x() << " " << noonSun.z() << ", low " << lowSun.x() << " " << lowSun.z();
    EXPECT_LT(lowSun.length(), noonSun.length());
}

// The moon stands opposite the light and shows only once the light is at
// or below -0.1, the same boundary at which surfaces lose their direct
// light.
TEST_F(AtmosphereColoursGLTest, MoonAppearsExactlyAtTheNightThreshold)
{
    struct Case
    {
        float z;
        bool night;
    };
    for (Case const c : {Case{-0.1f, true}, Case{std::nextafter(-0.1f, 0.0f), false}}) {
        osg::Vec3f const light(std::sqrt(1.0f - c.z * c.z), 0.0f, c.z);
        drawWithLight(light);
        osg::Vec3f const moon = skyTexel(-light);
        osg::Vec3f const beside = skyTexel(osg::Vec3f(-light.x(), 0.2f, -light.z()));
        if (c.night)
            EXPECT_GT(moon.length(), beside.length() + 0.3f) << "z " << c.z;
        else
            EXPECT_NEAR(moon.length(), beside.length(), 0.15f) << "z " << c.z;
    }
}

// With the sky terrain, the ground plane shows below the horizon only for a
// camera above it.
TEST_F(AtmosphereColoursGLTest, CameraBelowTheTerrainHeightSeesNoGround)
{
    context().camera()->getOrCreateStateSet()->setDefine("_USE_SKY_TERRAIN");
    mAtmosphere->setTerrainHeight(100.0f);
    // Plain green ground, without the mipmapped anisotropic layers, which
    // software GL samples very slowly.
    osg::ref_ptr<osg::Image> grass = new osg::Image;
    grass->allocateImage(4, 4, 1, GL_RGB, GL_UNSIGNED_BYTE);
    for (unsigned char* p = grass->data(); p < grass->data() + grass->getTotalSizeInBytes(); p += 3) {
        p[0] = 60;
        p[1] = 120;
        p[2] = 30;
    }
    osg::ref_ptr<osg::Texture2DArray> ground = new osg::Texture2DArray;
    ground->setFilter(osg::Texture::MIN_FILTER, osg::Texture::LINEAR);
    ground->setImage(0, grass.get());
    mAtmosphere->setTerrainTexture(ground.get());
    osg::Vec3f const down(0.0f, 0.3f, -1.0f);

    // One frame each: the sky cube is redrawn every frame, and this sky is
    // the costliest.
    mLight.set(kDirection, sunAt(89.5f).ptr(), 3);
    mCameraPosition->set(osg::Vec3f(0.0f, 0.0f, 150.0f));
    context().renderFrames(mScene.get(), 1);
    osg::Vec3f const above = skyTexel(down);
    mCameraPosition->set(osg::Vec3f(0.0f, 0.0f, 50.0f));
    context().renderFrames(mScene.get(), 1);
    osg::Vec3f const below = skyTexel(down);
    // Grass is green; the sky seen downwards through the air is not.
    EXPECT_GT(above.y(), above.z()) << above.x() << " " << above.y() << " " << above.z();
    EXPECT_GT(below.z(), below.y()) << below.x() << " " << below.y() << " " << below.z();
}

} // namespace
