// A model outdoors under the atmosphere background, through host commands
// only: the sky behind it at noon, at sunset and at night, a physically
// based sphere lit by the image-based light made from that sky, and fog.
#include "LitSceneFixture.h"
#include "MaterialTestSupport.h"
#include "SceneShapes.h"

#include "TarnwickCommon/Common.h"
#include "TarnwickRender/CKVPhysicalMaterial.h"

namespace Kelvor {
namespace {

class AtmosphereSceneGLTest : public LitSceneFixture
{
protected:
    // Low and looking a little up, so that the horizon crosses the picture.
    AtmosphereSceneGLTest() : LitSceneFixture({160, 120, CKVPoint3D(6.0, -9.0, 2.0), CKVPoint3D(0.0, 0.0, 1.8)}) {}

    void SetUp() override
    {
        CKVAString directory;
        Common::getResourceDirectory(directory);
        if (!Common::checkFile((std::string(directory.c_str()) + "/skybox/scattering_texture.data").c_str()))
            GTEST_SKIP() << "the atmosphere tables have not been generated";
        LitSceneFixture::SetUp();
    }

    void configure(CKVRenderConfig& config) override
    {
        CKVBackGroundConfig background;
        background.setBackGroundType(CKVBackGroundConfig::kAtmosphere);
        config.setBackGroundConfig(background);
        config.setAtmosphericScattteringUse(true);
        config.setLightIntensity(6.0f);
        config.setAmbientIntensity(0.2f);
        // The sun almost overhead: the sky's daylight.
        config.setLightPosition(CKVVec3<float>(0.0f, -0.02f, 1.0f));
    }

    static kv_shared_ptr<CKVBasicMaterial> colour(unsigned char r, unsigned char g, unsigned char b)
    {
        kv_shared_ptr<CKVBasicMaterial> material(new CKVBasicMaterial);
        material->setRGBA(r, g, b, 255);
        return material;
    }
};

} // namespace

TEST_F(AtmosphereSceneGLTest, ModelUnderTheSkyByDayAtSunsetAtNightAndInFog)
{
    kv_shared_ptr<CKVBasicMaterial> ground = colour(170, 170, 160);
    addNode(ground.get(), {SceneShapes::boxShape(5.0f, 5.0f, 0.05f)}, CKVPoint3D(0, 0, -0.05));
    kv_shared_ptr<CKVBasicMaterial> red = colour(200, 40, 30);
    addNode(red.get(), {SceneShapes::boxShape(0.8f, 0.8f, 0.8f)}, CKVPoint3D(-2.0, 1.0, 0.8));
    // Polished metal: nearly all it shows is the prefiltered sky.
    kv_shared_ptr<CKVPhysicalMaterial> metal(new CKVPhysicalMaterial);
    metal->setRGBA(230, 230, 235, 255);
    metal->setMetallic(0.9f);
    metal->setRoughness(0.15f);
    addNode(metal.get(), {SceneShapes::sphereShape(1.0f)}, CKVPoint3D(1.0, 0.0, 1.0));
    expectGolden("atmosphere_noon");

    mConfig.setLightPosition(CKVVec3<float>(-0.2f, 1.0f, 0.04f));
    applyConfig();
    expectGolden("atmosphere_sunset");

    mConfig.setLightPosition(CKVVec3<float>(0.3f, -0.3f, -0.9f));
    applyConfig();
    expectGolden("atmosphere_night");

    mConfig.setLightPosition(CKVVec3<float>(0.0f, -0.02f, 1.0f));
    mConfig.setFogUse(true);
    mConfig.setFogColor(CKVVec3<float>(0.8f, 0.82f, 0.85f));
    mConfig.setFogDensity(0.06f);
    applyConfig();
    expectGolden("atmosphere_fog");
}

} // namespace Kelvor
