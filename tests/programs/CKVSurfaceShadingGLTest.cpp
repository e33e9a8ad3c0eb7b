#include "UniformBlockTestSupport.h"

#include "programs/CKVProgramManager.h"
#include "support/GLTest.h"

#include <gtest/gtest.h>

#include <osg/Geode>
#include <osg/Geometry>
#include <osg/Texture2D>
#include <osg/Uniform>

#include <algorithm>
#include <cmath>
#include <vector>

namespace Kelvor {
namespace {

// Drawn with identity camera and model matrices: the bands below are given
// in clip space, and pixel x of the 64 x 16 picture is clip x * 32 + 32.
constexpr int kWidth = 64;
constexpr int kHeight = 16;
constexpr float kPi = 3.14159265359f;

// The tone curve and encoding the surface shader must apply, in C++.
int displayByte(float linear)
{
    float const c = linear;
    float const aces = (c * (2.51f * c + 0.03f)) / (c * (2.43f * c + 0.59f) + 0.14f);
    return static_cast<int>(std::lround(std::min(std::pow(aces, 1.0f / 2.2f), 1.0f) * 255.0f));
}

// LightInfo as floats: intensity, ambient intensity, pad, pad, direction,
// pad, colour, pad, ambient colour, pad. This one neutralises the lighting:
// no direct light, and an ambient term equal to the albedo.
std::vector<float> neutralLight()
{
    return {0, kPi / 3.5f, 0, 0, 0, 0, 1, 0, 1, 1, 1, 0, 1, 1, 1, 0};
}

// A full-height band facing the viewer with its normal along +z; `instance`
// gives the four columns of an instance matrix, repeated per vertex.
osg::ref_ptr<osg::Geometry> band(float x0, float x1, osg::Vec4 const& albedo,
                                 osg::Vec4 const* instance = nullptr)
{
    osg::ref_ptr<osg::Geometry> geometry = new osg::Geometry;
    osg::ref_ptr<osg::Vec3Array> vertices = new osg::Vec3Array;
    for (osg::Vec2 const& corner : {osg::Vec2(x0, -1), osg::Vec2(x1, -1), osg::Vec2(x1, 1), osg::Vec2(x0, 1)})
        vertices->push_back(osg::Vec3(corner, 0.0f));
    osg::ref_ptr<osg::Vec3Array> normals = new osg::Vec3Array;
    normals->assign(4, osg::Vec3(0.0f, 0.0f, 1.0f));
    geometry->setVertexAttribArray(0, vertices.get(), osg::Array::BIND_PER_VERTEX);
    geometry->setVertexAttribArray(1, normals.get(), osg::Array::BIND_PER_VERTEX);
    for (unsigned int c = 0; instance && c < 4; ++c)
    {
        osg::ref_ptr<osg::Vec4Array> column = new osg::Vec4Array;
        column->assign(4, instance[c]);
        geometry->setVertexAttribArray(3 + c, column.get(), osg::Array::BIND_PER_VERTEX);
    }
    geometry->addPrimitiveSet(new osg::DrawArrays(GL_TRIANGLE_FAN, 0, 4));
    geometry->setInitialBound(osg::BoundingBox(-1, -1, -1, 1, 1, 1));
    geometry->getOrCreateStateSet()->addUniform(new osg::Uniform("AlbedoColor_V4", albedo));
    return geometry;
}

// The gamma-encoded material colour whose linear value is `linear`.
osg::Vec4 encoded(osg::Vec3 const& linear, float alpha = 1.0f)
{
    auto e = [](float v) { return std::pow(v, 1.0f / 2.2f); };
    return {e(linear.x()), e(linear.y()), e(linear.z()), alpha};
}

::testing::AssertionResult rgbNear(osg::Vec4i const& p, int r, int g, int b)
{
    if (std::abs(p.x() - r) <= 2 && std::abs(p.y() - g) <= 2 && std::abs(p.z() - b) <= 2)
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "pixel (" << p.x() << ", " << p.y() << ", " << p.z()
                                         << ") expected (" << r << ", " << g << ", " << b << ")";
}

bool isClearColour(osg::Vec4i const& p)
{
    return p.x() == 0 && p.y() == 0 && p.z() == 255;
}

class SurfaceShadingGLTest : public GLTest
{
protected:
    int contextWidth() const override { return kWidth; }
    int contextHeight() const override { return kHeight; }

    // A root with the shared blocks, the program of the kind and bits and
    // the node's defines; without bindless textures, as on this driver.
    osg::ref_ptr<osg::Geode> makeScene(CKVProgramParam::Type type, unsigned int bits,
                                       std::vector<float> const& light = neutralLight())
    {
        CKVProgramParam param(type);
        param.addParam(static_cast<CKVProgramParam::Param>(bits));
        osg::ref_ptr<osg::Geode> root = new osg::Geode;
        osg::StateSet* stateSet = root->getOrCreateStateSet();
        bindBlock(*stateSet, 0, identities(7));
        bindBlock(*stateSet, 1, identities(2));
        bindBlock(*stateSet, 2, light);
        stateSet->addUniform(new osg::Uniform("camPos_W", osg::Vec3(0.0f, 0.0f, -1.0f)));
        stateSet->setDefine("_USE_NOT_BINDLESS_TEXTURE");
        stateSet->setAttributeAndModes(mManager.getProgram(param).get());
        mManager.applyDefines(stateSet, param);
        return root;
    }

    osg::ref_ptr<osg::Image> render(osg::Node* scene)
    {
        osg::Camera* camera = context().camera();
        camera->setClearColor(osg::Vec4(0.0f, 0.0f, 1.0f, 1.0f));
        camera->setViewMatrix(osg::Matrixd::identity());
        camera->setProjectionMatrixAsOrtho(-1.0, 1.0, -1.0, 1.0, -1.0, 1.0);
        camera->setComputeNearFarMode(osg::CullSettings::DO_NOT_COMPUTE_NEAR_FAR);
        camera->setCullingMode(osg::CullSettings::NO_CULLING);
        osg::ref_ptr<osg::Image> image = context().renderFrames(scene, 1, kWidth, kHeight);
        EXPECT_TRUE(image.valid()) << context().error();
        return image;
    }

    static osg::Vec4i pixel(osg::Image const& image, int x, int y)
    {
        unsigned char const* p = image.data(x, y);
        return {p[0], p[1], p[2], p[3]};
    }

    struct Manager : CKVProgramManager
    {
    } mManager;
};

// The surface programs tone-map and encode as the reference curve; the
// extra outputs of the main pass are written after the colour and must
// leave it as it was.
TEST_F(SurfaceShadingGLTest, ToneMapsAndEncodesLinearColoursAsTheReferenceCurve)
{
    struct Case
    {
        CKVProgramParam::Type type;
        std::vector<char const*> defines;
    };
    std::vector<Case> const cases = {
        {CKVProgramParam::kSurface, {}},
        {CKVProgramParam::kSurface, {"_USE_TAA", "_USE_SILHOUETTE", "_USE_VOLUMETRICLIGHT"}},
        {CKVProgramParam::kReflectedSurface, {}},
    };
    // Dark, mid, bright and far-over-white linear values in each channel.
    std::vector<osg::Vec3> const linear = {
        {0.0f, 0.05f, 0.18f}, {0.5f, 1.0f, 2.0f}, {4.0f, 0.01f, 0.3f}, {16.0f, 0.7f, 0.002f}};
    for (std::size_t k = 0; k < cases.size(); ++k)
    {
        osg::ref_ptr<osg::Geode> scene = makeScene(cases[k].type, 0);
        osg::StateSet* stateSet = scene->getOrCreateStateSet();
        // The reflection's mirror and water plane: no mirroring, no cut.
        stateSet->addUniform(new osg::Uniform("reflectMatrix", osg::Matrixf()));
        stateSet->addUniform(new osg::Uniform("waterPlane", osg::Vec4(0.0f, 0.0f, 0.0f, 0.0f)));
        for (char const* define : cases[k].defines)
            stateSet->setDefine(define);
        for (std::size_t i = 0; i < linear.size(); ++i)
            scene->addDrawable(band(-1.0f + 0.5f * i, -0.5f + 0.5f * i, encoded(linear[i])));
        osg::ref_ptr<osg::Image> image = render(scene.get());
        ASSERT_TRUE(image.valid()) << "case " << k;

        for (std::size_t i = 0; i < linear.size(); ++i)
        {
            EXPECT_TRUE(rgbNear(pixel(*image, 16 * static_cast<int>(i) + 8, 8), displayByte(linear[i].x()),
                                displayByte(linear[i].y()), displayByte(linear[i].z())))
                << "case " << k << ", band " << i;
        }
    }
}

TEST_F(SurfaceShadingGLTest, WhiteModelKeepsTheMaterialsAlphaForTheAlphaTest)
{
    osg::ref_ptr<osg::Geode> scene = makeScene(CKVProgramParam::kSurface, CKVProgramParam::kUseAlphaTest);
    scene->getOrCreateStateSet()->setDefine("_USE_WHITE_COLOR");
    // One percent is kept; just below it is discarded.
    scene->addDrawable(band(-1.0f, 0.0f, osg::Vec4(0.8f, 0.1f, 0.1f, 0.01f)));
    scene->addDrawable(band(0.0f, 1.0f, osg::Vec4(0.8f, 0.1f, 0.1f, 0.0099f)));
    osg::ref_ptr<osg::Image> image = render(scene.get());
    ASSERT_TRUE(image.valid());

    int const white = displayByte(1.0f);
    EXPECT_TRUE(rgbNear(pixel(*image, 16, 8), white, white, white));
    EXPECT_TRUE(isClearColour(pixel(*image, 48, 8))) << "discarded band drawn";
}

TEST_F(SurfaceShadingGLTest, NightBeginsWhenTheSunIsAtMinusOneTenth)
{
    auto shade = [&](float sunZ) {
        std::vector<float> light = neutralLight();
        light[5] = 1.0f;
        light[6] = sunZ;
        // The ambient colour is left out at night: make it visible by day.
        std::fill(light.begin() + 12, light.begin() + 15, 0.5f);
        osg::ref_ptr<osg::Geode> scene = makeScene(CKVProgramParam::kSurface, 0, light);
        osg::StateSet* stateSet = scene->getOrCreateStateSet();
        stateSet->setDefine("_USE_ATMOSPHERE");
        // A white sky: by day the light keeps its colour.
        osg::ref_ptr<osg::Image> sky = new osg::Image;
        sky->allocateImage(1, 1, 1, GL_RGB, GL_UNSIGNED_BYTE);
        std::fill(sky->data(), sky->data() + 3, static_cast<unsigned char>(255));
        osg::ref_ptr<osg::Texture2D> texture = new osg::Texture2D(sky.get());
        texture->setFilter(osg::Texture::MIN_FILTER, osg::Texture::NEAREST);
        texture->setFilter(osg::Texture::MAG_FILTER, osg::Texture::NEAREST);
        stateSet->setTextureAttributeAndModes(0, texture.get());
        stateSet->addUniform(new osg::Uniform("scatteringTexture", 0));
        scene->addDrawable(band(-1.0f, 1.0f, encoded({0.3f, 0.3f, 0.3f})));
        osg::ref_ptr<osg::Image> image = render(scene.get());
        return image.valid() ? pixel(*image, 32, 8) : osg::Vec4i(-1, -1, -1, -1);
    };

    int const night = displayByte(0.3f);
    int const day = displayByte(0.3f * 0.5f);
    EXPECT_TRUE(rgbNear(shade(-0.1f), night, night, night)) << "sun at -0.1";
    EXPECT_TRUE(rgbNear(shade(-0.09f), day, day, day)) << "sun at -0.09";
}

TEST_F(SurfaceShadingGLTest, ClipPlaneKeepsItsNegativeSide)
{
    osg::ref_ptr<osg::Geode> scene = makeScene(CKVProgramParam::kSurface, 0);
    osg::StateSet* stateSet = scene->getOrCreateStateSet();
    stateSet->setDefine("_USE_CLIP_TEST");
    stateSet->setMode(GL_CLIP_DISTANCE0, osg::StateAttribute::ON);
    stateSet->addUniform(new osg::Uniform("ClipPlaneCount_I", 1));
    osg::ref_ptr<osg::Uniform> planes = new osg::Uniform(osg::Uniform::FLOAT_VEC4, "ClipPlaneArr", 6);
    // x - 0.5 = 0: what lies left of pixel 48 is kept.
    planes->setElement(0, osg::Vec4(1.0f, 0.0f, 0.0f, -0.5f));
    stateSet->addUniform(planes.get());
    scene->addDrawable(band(-1.0f, 1.0f, encoded({0.5f, 0.5f, 0.5f})));
    osg::ref_ptr<osg::Image> image = render(scene.get());
    ASSERT_TRUE(image.valid());

    EXPECT_FALSE(isClearColour(pixel(*image, 44, 8)));
    EXPECT_TRUE(isClearColour(pixel(*image, 52, 8)));
}

TEST_F(SurfaceShadingGLTest, MirroredInstanceIsLitLikeItsOriginal)
{
    // Unit radiance (0.4 * 2.5) from +z, no ambient.
    std::vector<float> light = neutralLight();
    light[0] = 2.5f;
    light[1] = 0.0f;
    osg::ref_ptr<osg::Geode> scene =
        makeScene(CKVProgramParam::kSurface, CKVProgramParam::kUseInstanceMatrix, light);
    osg::Vec4 const identity[4] = {{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}};
    // x' = 1 - x: the right half mirrored onto itself, its winding reversed.
    osg::Vec4 const mirror[4] = {{-1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {1, 0, 0, 1}};
    scene->addDrawable(band(-1.0f, 0.0f, encoded({0.6f, 0.6f, 0.6f}), identity));
    scene->addDrawable(band(0.0f, 1.0f, encoded({0.6f, 0.6f, 0.6f}), mirror));
    osg::ref_ptr<osg::Image> image = render(scene.get());
    ASSERT_TRUE(image.valid());

    int const lit = displayByte(0.6f / kPi);
    EXPECT_TRUE(rgbNear(pixel(*image, 16, 8), lit, lit, lit)) << "original";
    EXPECT_TRUE(rgbNear(pixel(*image, 48, 8), lit, lit, lit)) << "mirrored";
}

TEST_F(SurfaceShadingGLTest, HighlightLaysAScreenCheckerboardOverFlatColour)
{
    osg::ref_ptr<osg::Geode> scene = makeScene(CKVProgramParam::kFlatColor, CKVProgramParam::kUseHighlightStyle);
    scene->addDrawable(band(-1.0f, 1.0f, osg::Vec4(0.5f, 0.25f, 1.0f, 1.0f)));
    osg::ref_ptr<osg::Image> image = render(scene.get());
    ASSERT_TRUE(image.valid());

    // Flat colour is written as given: no tone curve, no encoding.
    for (int y = 4; y < 12; ++y)
    {
        for (int x = 20; x < 28; ++x)
        {
            bool const gap = (x + y) % 2 != 0;
            EXPECT_TRUE(rgbNear(pixel(*image, x, y), gap ? 0 : 128, gap ? 0 : 64, gap ? 0 : 255))
                << x << ", " << y;
        }
    }
}

} // namespace
} // namespace Kelvor
