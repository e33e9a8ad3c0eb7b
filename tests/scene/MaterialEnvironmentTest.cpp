// Water, physical water and terrain materials, which read the generated
// resources under the resource folder.
#include "MaterialTestSupport.h"

#include "scene/CKVTerrainMaterialBinder.h"
#include "scene/CKVTextureLoader.h"

#include "TarnwickRender/CKVPhysicalWaterMaterial.h"
#include "TarnwickRender/CKVRenderOptionState.h"
#include "TarnwickRender/CKVTerrainMaterial.h"
#include "TarnwickRender/CKVWaterMaterial.h"

#include <osg/CullFace>
#include <osg/PolygonOffset>
#include <osg/Texture2D>
#include <osg/Texture2DArray>
#include <osg/TextureCubeMap>

#include <gtest/gtest.h>

using namespace Kelvor;
using namespace Kelvor::MaterialTestSupport;

namespace {

osg::StateAttribute const* textureAt(osg::StateSet* stateSet, unsigned int unit)
{
    return stateSet->getTextureAttribute(unit, osg::StateAttribute::TEXTURE);
}

class MaterialEnvironmentTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        if (!CKVTextureLoader::getResourceImage("/water/normal.tga").valid())
            GTEST_SKIP() << "the generated resources are missing";
    }
    TempFolder mFolder;
};

} // namespace

TEST_F(MaterialEnvironmentTest, WaterReadsItsResourcesOnceAndLeavesTheExtraPasses)
{
    kv_shared_ptr<CKVWaterMaterial> water(new CKVWaterMaterial);
    water->setRGBA(20, 60, 90, 200);
    water->setSpeed(2.0f);
    water->setFlowDir(CKVPoint2D(0.0, 1.0));
    water->setNormalScale(0.5f);
    water->setFaceDisplacement(3.0);
    MaterialNode node;
    CKVRenderOptionState* options = new CKVRenderOptionState;
    node.node().getStateSet()->addState(options);
    node.apply(water.get());

    osg::StateSet* stateSet = node.stateSet();
    osg::StateAttribute const* normalMap = textureAt(stateSet, 0);
    auto const* cube = dynamic_cast<osg::TextureCubeMap const*>(textureAt(stateSet, 1));
    ASSERT_NE(normalMap, nullptr);
    ASSERT_NE(cube, nullptr);
    for (unsigned int face = 0; face < 6; ++face)
        EXPECT_NE(cube->getImage(face), nullptr) << face;
    EXPECT_EQ(node.uniformValue<int>("normalMap"), 0);
    EXPECT_EQ(node.uniformValue<int>("cubeMap"), 1);
    EXPECT_FLOAT_EQ(node.uniformValue<float>("speed"), 2.0f);
    EXPECT_EQ(node.uniformValue<osg::Vec2f>("FlowDir"), osg::Vec2f(0.0f, 1.0f));
    EXPECT_FLOAT_EQ(node.uniformValue<float>("normalScale"), 0.5f);
    EXPECT_FLOAT_EQ(node.uniformValue<osg::Vec4f>("AlbedoColor_V4").a(), 200 / 255.0f);
    // Water blends in its own program; the material only sorts it.
    EXPECT_EQ(stateSet->getMode(GL_BLEND), osg::StateAttribute::INHERIT);
    EXPECT_EQ(stateSet->getBinNumber(), 10);
    auto const* offset = static_cast<osg::PolygonOffset const*>(stateSet->getAttribute(osg::StateAttribute::POLYGONOFFSET));
    ASSERT_NE(offset, nullptr);
    EXPECT_FLOAT_EQ(offset->getFactor(), 0.3f);
    EXPECT_FLOAT_EQ(offset->getUnits(), 0.3f);

    EXPECT_FALSE(options->hasRenderOption(CKVRenderOptionState::kWaterReflection));
    EXPECT_FALSE(options->hasRenderOption(CKVRenderOptionState::kCastShadow));
    EXPECT_FALSE(options->hasRenderOption(CKVRenderOptionState::kAmbientOcclusion));
    EXPECT_TRUE(options->hasRenderOption(CKVRenderOptionState::kLightPropagation));

    // A change of speed keeps the textures already bound.
    kv_shared_ptr<CKVWaterMaterial> faster(new CKVWaterMaterial(*water));
    faster->setSpeed(5.0f);
    node.apply(faster.get());
    EXPECT_EQ(textureAt(stateSet, 0), normalMap);
    EXPECT_EQ(textureAt(stateSet, 1), cube);
    EXPECT_FLOAT_EQ(node.uniformValue<float>("speed"), 5.0f);
}

TEST_F(MaterialEnvironmentTest, PhysicalWaterCullsBackFacesWhateverTheMaterialSays)
{
    kv_shared_ptr<CKVPhysicalWaterMaterial> water(new CKVPhysicalWaterMaterial);
    water->setFaceCullMode(CKVBasicMaterial::kCullFront);
    MaterialNode node(water.get());
    osg::StateSet* stateSet = node.stateSet();
    auto const* cull = static_cast<osg::CullFace const*>(stateSet->getAttribute(osg::StateAttribute::CULLFACE));
    ASSERT_NE(cull, nullptr);
    EXPECT_EQ(cull->getMode(), osg::CullFace::BACK);
    EXPECT_TRUE(stateSet->getMode(GL_CULL_FACE) & osg::StateAttribute::ON);
    EXPECT_NE(stateSet->getAttribute(osg::StateAttribute::PATCH_PARAMETER), nullptr);
    EXPECT_EQ(node.uniformValue<int>("s_HeightTexture"), 0);
    EXPECT_EQ(node.uniformValue<int>("s_NormalTexture"), 1);
    EXPECT_EQ(node.uniformValue<int>("cubeMap"), 2);
    EXPECT_NE(dynamic_cast<osg::TextureCubeMap const*>(textureAt(stateSet, 2)), nullptr);
}

TEST_F(MaterialEnvironmentTest, TerrainWithoutLayersStillGetsItsCliff)
{
    kv_shared_ptr<CKVTerrainMaterial> terrain(new CKVTerrainMaterial);
    terrain->setChangeHeight(120.0f);
    MaterialNode node(terrain.get());
    osg::StateSet* stateSet = node.stateSet();
    EXPECT_EQ(stateSet->getUniform("terrainTextureArray"), nullptr);
    int const cliffUnit = node.uniformValue<int>("cliffTexture");
    auto const* cliff = dynamic_cast<osg::Texture2D const*>(textureAt(stateSet, cliffUnit));
    ASSERT_NE(cliff, nullptr);
    EXPECT_NE(cliff->getImage(), nullptr);
    for (unsigned int unit = 0; unit < 4; ++unit) {
        osg::StateAttribute const* texture = textureAt(stateSet, unit);
        EXPECT_TRUE(!texture || texture == cliff) << "only the cliff is bound, found one on unit " << unit;
    }
    EXPECT_FLOAT_EQ(node.uniformValue<float>("changeHeight"), 120.0f);
    EXPECT_EQ(node.uniformValue<osg::Vec4f>("AlbedoColor_V4"), osg::Vec4f(0, 0, 0, 1));
}

TEST_F(MaterialEnvironmentTest, TerrainLayersShareTheSmallestSizeAndTheFirstFormat)
{
    unsigned char const rgba[4] = {10, 20, 30, 255};
    unsigned char const rgb[3] = {200, 100, 50};
    std::string const big = writeImage(mFolder, "big.png", *solidImage(32, 16, GL_RGBA, rgba));
    std::string const small = writeImage(mFolder, "small.png", *solidImage(8, 24, GL_RGB, rgb));
    kv_shared_ptr<CKVTerrainMaterial> terrain(new CKVTerrainMaterial);
    terrain->addTexture(big.c_str());
    terrain->addTexture(small.c_str());
    terrain->addTexture(mFolder.file("missing.png").c_str());
    MaterialNode node(terrain.get());

    int const arrayUnit = node.uniformValue<int>("terrainTextureArray");
    auto const* array = dynamic_cast<osg::Texture2DArray const*>(textureAt(node.stateSet(), arrayUnit));
    ASSERT_NE(array, nullptr);
    ASSERT_EQ(array->getNumImages(), 3u);
    for (unsigned int i = 0; i < 3; ++i) {
        osg::Image const* layer = array->getImage(i);
        ASSERT_NE(layer, nullptr) << i;
        EXPECT_EQ(layer->s(), 8) << i;
        EXPECT_EQ(layer->t(), 16) << i;
        EXPECT_EQ(layer->getInternalTextureFormat(), array->getImage(0)->getInternalTextureFormat()) << i;
    }
    EXPECT_EQ(array->getFilter(osg::Texture::MIN_FILTER), osg::Texture::LINEAR_MIPMAP_LINEAR);
    EXPECT_EQ(array->getWrap(osg::Texture::WRAP_R), osg::Texture::REPEAT);
    EXPECT_NE(node.uniformValue<int>("cliffTexture"), arrayUnit);

    // The missing layer shows the path error image, scaled as a copy: the
    // shared error image keeps its own size for every other material.
    osg::ref_ptr<osg::Image> const shared = CKVTextureLoader::getErrorPathImage();
    EXPECT_NE(array->getImage(2), shared.get());
    EXPECT_EQ(shared->s(), 64);
}
