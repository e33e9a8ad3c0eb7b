// Plain, physical and line materials as the update traversal applies them to
// the state set of a host node.
#include "MaterialTestSupport.h"

#include "programs/CKVRenderStateManager.h"
#include "scene/CKVTextureLoader.h"
#include "viewer/DepthRange.h"

#include "TarnwickRender/CKVLineMaterial.h"
#include "TarnwickRender/CKVPhysicalMaterial.h"

#include <osg/CullFace>
#include <osg/LineStipple>
#include <osg/LineWidth>
#include <osg/PolygonOffset>
#include <osg/Texture2D>

#include <gtest/gtest.h>

using namespace Kelvor;
using namespace Kelvor::MaterialTestSupport;

namespace {

unsigned char const kOpaqueRed[4] = {255, 0, 0, 255};
unsigned char const kHalfRed[4] = {255, 0, 0, 128};

kv_shared_ptr<CKVBasicMaterial> colourMaterial(unsigned char alpha, bool sort = true, int bin = 0)
{
    kv_shared_ptr<CKVBasicMaterial> material(new CKVBasicMaterial);
    material->setRGBA(51, 102, 204, alpha);
    material->setSortTransparency(sort);
    material->setSortTransparencyBin(bin);
    return material;
}

osg::Image const* albedoImage(osg::StateSet* stateSet)
{
    auto const* texture =
        dynamic_cast<osg::Texture2D const*>(stateSet->getTextureAttribute(0, osg::StateAttribute::TEXTURE));
    return texture ? texture->getImage() : nullptr;
}

bool blends(osg::StateSet* stateSet)
{
    return stateSet->getMode(GL_BLEND) & osg::StateAttribute::ON;
}

class MaterialBindingTest : public ::testing::Test
{
protected:
    void SetUp() override { CKVRenderStateManager::instance().setPBRInUse(false); }
    TempFolder mFolder;
};

} // namespace

TEST_F(MaterialBindingTest, ColourDecidesBlendingAndTheDepthSortedBin)
{
    MaterialNode opaque(colourMaterial(255).get());
    osg::Vec4f const colour = opaque.uniformValue<osg::Vec4f>("AlbedoColor_V4");
    EXPECT_FLOAT_EQ(colour.r(), 0.2f);
    EXPECT_FLOAT_EQ(colour.b(), 0.8f);
    EXPECT_FLOAT_EQ(colour.a(), 1.0f);
    EXPECT_FALSE(blends(opaque.stateSet()));
    EXPECT_EQ(opaque.stateSet()->getRenderBinMode(), osg::StateSet::INHERIT_RENDERBIN_DETAILS);

    // Unsorted translucency blends in the default bin.
    MaterialNode unsorted(colourMaterial(254, false).get());
    EXPECT_TRUE(blends(unsorted.stateSet()));
    EXPECT_EQ(unsorted.stateSet()->getRenderBinMode(), osg::StateSet::INHERIT_RENDERBIN_DETAILS);

    // Sorted bins come after every opaque bin: host bin 0 is bin 10.
    for (int bin : {0, 3}) {
        MaterialNode sorted(colourMaterial(128, true, bin).get());
        EXPECT_TRUE(blends(sorted.stateSet()));
        EXPECT_EQ(sorted.stateSet()->getRenderBinMode(), osg::StateSet::USE_RENDERBIN_DETAILS);
        EXPECT_EQ(sorted.stateSet()->getBinNumber(), bin + 10);
        EXPECT_EQ(sorted.stateSet()->getBinName(), "DepthSortedBin");
    }
}

TEST_F(MaterialBindingTest, OnlyADirtyMaterialIsAppliedAndReapplyingDoesNotAccumulate)
{
    MaterialNode node;
    kv_shared_ptr<CKVBasicMaterial> material = colourMaterial(255);
    material->setFaceCullMode(CKVBasicMaterial::kCullBack);
    node.apply(material.get());
    ASSERT_NE(node.stateSet(), nullptr);
    EXPECT_FALSE(node.state()->isDirty());
    std::size_t const uniforms = node.stateSet()->getUniformList().size();
    std::size_t const attributes = node.stateSet()->getAttributeList().size();

    // A clean state is not looked at again: a removed uniform stays removed.
    node.stateSet()->removeUniform("AlbedoColor_V4");
    node.update();
    EXPECT_EQ(node.stateSet()->getUniform("AlbedoColor_V4"), nullptr);

    // Setting a material again replaces by name and type, adds nothing.
    node.apply(material.get());
    node.apply(material.get());
    EXPECT_EQ(node.stateSet()->getUniformList().size(), uniforms);
    EXPECT_EQ(node.stateSet()->getAttributeList().size(), attributes);
}

TEST_F(MaterialBindingTest, AStateWithoutMaterialStaysDirtyUntilOneArrives)
{
    MaterialNode node(nullptr);
    EXPECT_TRUE(node.state()->isDirty());
    node.apply(colourMaterial(255).get());
    EXPECT_FALSE(node.state()->isDirty());
    EXPECT_NE(node.stateSet()->getUniform("AlbedoColor_V4"), nullptr);
}

TEST_F(MaterialBindingTest, TextureGoesOnUnitZeroAndSilencesTheColour)
{
    std::string const path = writeImage(mFolder, "opaque.png", *solidImage(4, 4, GL_RGBA, kOpaqueRed));
    kv_shared_ptr<CKVBasicMaterial> material = colourMaterial(255);
    material->setTexture(path.c_str());
    MaterialNode node(material.get());

    osg::Image const* image = albedoImage(node.stateSet());
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->s(), 4);
    EXPECT_EQ(node.uniformValue<int>("Albedo_Tx"), 0);
    EXPECT_EQ(node.uniformValue<osg::Vec4f>("AlbedoColor_V4"), osg::Vec4f(0, 0, 0, 0));
    // An alpha channel with only opaque texels is not translucency.
    EXPECT_FALSE(blends(node.stateSet()));

    auto const* texture = static_cast<osg::Texture const*>(node.stateSet()->getTextureAttribute(0, osg::StateAttribute::TEXTURE));
    EXPECT_EQ(texture->getWrap(osg::Texture::WRAP_S), osg::Texture::REPEAT);
    EXPECT_EQ(texture->getWrap(osg::Texture::WRAP_T), osg::Texture::REPEAT);
    EXPECT_FLOAT_EQ(texture->getMaxAnisotropy(), 4.0f);
}

TEST_F(MaterialBindingTest, TranslucentTextureBlendsInItsBin)
{
    std::string const path = writeImage(mFolder, "glass.png", *solidImage(4, 4, GL_RGBA, kHalfRed));
    kv_shared_ptr<CKVBasicMaterial> material = colourMaterial(255, true, 2);
    material->setTexture(path.c_str());
    MaterialNode node(material.get());
    EXPECT_TRUE(blends(node.stateSet()));
    EXPECT_EQ(node.stateSet()->getBinNumber(), 12);
}

TEST_F(MaterialBindingTest, UnusableTexturesShowTheErrorImageThatSaysWhy)
{
    ASSERT_TRUE(CKVTextureLoader::getErrorPathImage().valid()) << "the generated resources are missing";
    ASSERT_TRUE(CKVTextureLoader::getErrorFormatImage().valid());
    ASSERT_NE(CKVTextureLoader::getErrorPathImage(), CKVTextureLoader::getErrorFormatImage());

    kv_shared_ptr<CKVBasicMaterial> missing = colourMaterial(255);
    missing->setTexture(mFolder.file("nowhere.png").c_str());
    MaterialNode missingNode(missing.get());
    EXPECT_EQ(albedoImage(missingNode.stateSet()), CKVTextureLoader::getErrorPathImage().get());

    kv_shared_ptr<CKVBasicMaterial> unreadable = colourMaterial(255);
    unreadable->setTexture(writeGarbage(mFolder, "garbage.png").c_str());
    MaterialNode unreadableNode(unreadable.get());
    EXPECT_EQ(albedoImage(unreadableNode.stateSet()), CKVTextureLoader::getErrorFormatImage().get());
    EXPECT_EQ(unreadableNode.uniformValue<int>("Albedo_Tx"), 0);
}

TEST_F(MaterialBindingTest, LuminanceTexturesBecomeGreyRGB)
{
    unsigned char const grey = 77;
    std::string const path = writeImage(mFolder, "grey.png", *solidImage(3, 2, GL_LUMINANCE, &grey));
    kv_shared_ptr<CKVBasicMaterial> material = colourMaterial(255);
    material->setTexture(path.c_str());
    MaterialNode node(material.get());
    osg::Image const* image = albedoImage(node.stateSet());
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->getPixelFormat(), static_cast<GLenum>(GL_RGB));
    EXPECT_EQ(image->getInternalTextureFormat(), GL_RGB8);
    for (int y = 0; y < 2; ++y) {
        for (int x = 0; x < 3; ++x) {
            unsigned char const* p = image->data(x, y);
            EXPECT_EQ(p[0], grey);
            EXPECT_EQ(p[1], grey);
            EXPECT_EQ(p[2], grey);
        }
    }
}

TEST_F(MaterialBindingTest, DisplacementDepthRangeAndCulling)
{
    kv_shared_ptr<CKVBasicMaterial> tiny = colourMaterial(255);
    tiny->setFaceDisplacement(0.0000001);
    MaterialNode tinyNode(tiny.get());
    EXPECT_EQ(tinyNode.stateSet()->getAttribute(osg::StateAttribute::POLYGONOFFSET), nullptr);
    EXPECT_EQ(tinyNode.stateSet()->getAttribute(static_cast<osg::StateAttribute::Type>(DepthRange::kType)), nullptr);
    // Culling -1 leaves what the node inherits alone.
    EXPECT_EQ(tinyNode.stateSet()->getAttribute(osg::StateAttribute::CULLFACE), nullptr);
    EXPECT_EQ(tinyNode.stateSet()->getMode(GL_CULL_FACE), osg::StateAttribute::INHERIT);

    kv_shared_ptr<CKVBasicMaterial> shifted = colourMaterial(255);
    shifted->setFaceDisplacement(2.0);
    shifted->setDepthRange(true, 0.0f, 0.25f);
    shifted->setFaceCullMode(CKVBasicMaterial::kCullFront);
    MaterialNode node(shifted.get());
    auto const* offset =
        static_cast<osg::PolygonOffset const*>(node.stateSet()->getAttribute(osg::StateAttribute::POLYGONOFFSET));
    ASSERT_NE(offset, nullptr);
    EXPECT_FLOAT_EQ(offset->getFactor(), -0.0625f);
    EXPECT_FLOAT_EQ(offset->getUnits(), 0.01f);
    EXPECT_TRUE(node.stateSet()->getMode(GL_POLYGON_OFFSET_FILL) & osg::StateAttribute::ON);
    auto const* range = static_cast<DepthRange const*>(
        node.stateSet()->getAttribute(static_cast<osg::StateAttribute::Type>(DepthRange::kType)));
    ASSERT_NE(range, nullptr);
    EXPECT_DOUBLE_EQ(range->getZNear(), 0.0);
    EXPECT_DOUBLE_EQ(range->getZFar(), 0.25);
    auto const* cull = static_cast<osg::CullFace const*>(node.stateSet()->getAttribute(osg::StateAttribute::CULLFACE));
    ASSERT_NE(cull, nullptr);
    EXPECT_EQ(cull->getMode(), osg::CullFace::FRONT);
    EXPECT_TRUE(node.stateSet()->getMode(GL_CULL_FACE) & osg::StateAttribute::ON);

    shifted = colourMaterial(255);
    shifted->setFaceCullMode(CKVBasicMaterial::kCullBack);
    node.apply(shifted.get());
    cull = static_cast<osg::CullFace const*>(node.stateSet()->getAttribute(osg::StateAttribute::CULLFACE));
    EXPECT_EQ(cull->getMode(), osg::CullFace::BACK);
}

TEST_F(MaterialBindingTest, PhysicalMapsTakeTheirUnitsAndMaskBits)
{
    unsigned char const normal[3] = {128, 128, 255};
    std::string const albedoPath = writeImage(mFolder, "albedo.png", *solidImage(4, 4, GL_RGB, normal));
    std::string const normalPath = writeImage(mFolder, "normal.png", *solidImage(4, 4, GL_RGB, normal));
    kv_shared_ptr<CKVPhysicalMaterial> material(new CKVPhysicalMaterial);
    material->setTexture(albedoPath.c_str());
    material->setNormalMap(normalPath.c_str());
    material->setRoughnessMap(normalPath.c_str());
    material->setAoMap(normalPath.c_str());
    material->setMetallic(0.75f);
    MaterialNode node(material.get());

    osg::StateSet* stateSet = node.stateSet();
    for (unsigned int unit : {0u, 1u, 3u, 4u})
        EXPECT_NE(stateSet->getTextureAttribute(unit, osg::StateAttribute::TEXTURE), nullptr) << unit;
    EXPECT_EQ(stateSet->getTextureAttribute(2, osg::StateAttribute::TEXTURE), nullptr);
    EXPECT_EQ(node.uniformValue<int>("NorMap_Tx"), 1);
    EXPECT_EQ(node.uniformValue<int>("Roughness_Tx"), 3);
    EXPECT_EQ(node.uniformValue<int>("AO_Tx"), 4);
    EXPECT_EQ(node.uniformValue<int>("TextureMask"), 1 | 2 | 8 | 16);
    EXPECT_FLOAT_EQ(node.uniformValue<float>("Metallic_F"), 0.75f);
    EXPECT_EQ(stateSet->getUniform("Roughness_F"), nullptr);
    EXPECT_TRUE(CKVRenderStateManager::instance().isPBRInUse());
}

TEST_F(MaterialBindingTest, UnreadablePhysicalMapsAreLeftOutWithoutErrorImages)
{
    kv_shared_ptr<CKVPhysicalMaterial> material(new CKVPhysicalMaterial);
    material->setNormalMap(mFolder.file("missing-normal.png").c_str());
    material->setRoughnessMap(writeGarbage(mFolder, "rough.png").c_str());
    material->setRoughness(0.3f);
    MaterialNode node(material.get());
    for (unsigned int unit = 0; unit < 5; ++unit)
        EXPECT_EQ(node.stateSet()->getTextureAttribute(unit, osg::StateAttribute::TEXTURE), nullptr) << unit;
    EXPECT_EQ(node.uniformValue<int>("TextureMask"), 0);
    EXPECT_FLOAT_EQ(node.uniformValue<float>("Roughness_F"), 0.3f);
    EXPECT_NE(node.stateSet()->getUniform("AlbedoColor_V4"), nullptr);
}

TEST_F(MaterialBindingTest, LineTypesPickTheStippleFactor)
{
    for (int type = 0; type <= 6; ++type) {
        kv_shared_ptr<CKVLineMaterial> material(new CKVLineMaterial);
        material->setLineType(static_cast<CKVLineMaterial::LineType>(type));
        material->setLineWidth(3.0f);
        MaterialNode node(material.get());
        auto const* stipple =
            static_cast<osg::LineStipple const*>(node.stateSet()->getAttribute(osg::StateAttribute::LINESTIPPLE));
        if (type >= 1 && type <= 5) {
            ASSERT_NE(stipple, nullptr) << type;
            EXPECT_EQ(stipple->getFactor(), type);
            EXPECT_EQ(stipple->getPattern(), 0xAAAA);
            EXPECT_TRUE(node.stateSet()->getMode(GL_LINE_STIPPLE) & osg::StateAttribute::ON);
        } else {
            EXPECT_EQ(stipple, nullptr) << type;
        }
        auto const* width = static_cast<osg::LineWidth const*>(node.stateSet()->getAttribute(osg::StateAttribute::LINEWIDTH));
        ASSERT_NE(width, nullptr);
        EXPECT_FLOAT_EQ(width->getWidth(), 3.0f);
    }

    // A solid line after a dashed one keeps the old stipple: materials only add.
    MaterialNode node;
    kv_shared_ptr<CKVLineMaterial> dashed(new CKVLineMaterial);
    dashed->setLineType(CKVLineMaterial::kDash2);
    node.apply(dashed.get());
    kv_shared_ptr<CKVLineMaterial> solid(new CKVLineMaterial);
    node.apply(solid.get());
    EXPECT_NE(node.stateSet()->getAttribute(osg::StateAttribute::LINESTIPPLE), nullptr);
}
