#include "UniformBlockTestSupport.h"

#include "programs/CKVProgramManager.h"
#include "support/GLTest.h"

#include <gtest/gtest.h>

#include <osg/Geode>
#include <osg/Geometry>
#include <osg/Uniform>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

namespace Kelvor {
namespace {

// Twelve bands of 8 x 8 pixels, each with three linear values, one per
// channel: 36 values from deep in the toe of the curve to far over white.
constexpr int kBands = 12;
constexpr int kBandWidth = 8;
constexpr int kWidth = kBands * kBandWidth;
constexpr int kHeight = 8;
constexpr float kPi = 3.14159265359f;

// What the surface shaders write for a linear colour value: the rational
// ACES fit, then the 1/2.2 encoding, then the 8-bit colour buffer's clamp
// and rounding.
int referenceByte(float linear)
{
    double const c = linear;
    double const aces = (c * (2.51 * c + 0.03)) / (c * (2.43 * c + 0.59) + 0.14);
    double const encoded = std::pow(std::max(aces, 0.0), 1.0 / 2.2);
    return static_cast<int>(std::lround(std::min(encoded, 1.0) * 255.0));
}

float sweepValue(int i)
{
    // Geometric from 0.0005 to 50: equal steps in stops.
    return 0.0005f * std::pow(10.0f, 5.0f * static_cast<float>(i) / 35.0f);
}

// Band b holds values b, b + 12 and b + 24 of the sweep, so every band
// mixes a dark, a middle and a bright channel.
osg::Vec3 bandLinear(int band)
{
    return {sweepValue(band), sweepValue(band + kBands), sweepValue(band + 2 * kBands)};
}

// LightInfo without direct light and with an ambient term equal to the
// albedo (the shaders scale the ambient by intensity * 3.5 / pi), so that
// the colour before tone mapping is the material's linear colour.
std::vector<float> neutralLight()
{
    return {0, kPi / 3.5f, 0, 0, 0, 0, 1, 0, 1, 1, 1, 0, 1, 1, 1, 0};
}

// A band facing the viewer, in clip space (the camera is identity), whose
// material colour is the gamma-encoded form of `linear`, as materials are
// authored.
osg::ref_ptr<osg::Geometry> band(int index, osg::Vec3 const& linear)
{
    float const x0 = -1.0f + 2.0f * static_cast<float>(index) / kBands;
    float const x1 = x0 + 2.0f / kBands;
    osg::ref_ptr<osg::Geometry> geometry = new osg::Geometry;
    osg::ref_ptr<osg::Vec3Array> vertices = new osg::Vec3Array;
    for (osg::Vec2 const& corner : {osg::Vec2(x0, -1), osg::Vec2(x1, -1), osg::Vec2(x1, 1), osg::Vec2(x0, 1)})
        vertices->push_back(osg::Vec3(corner, 0.0f));
    osg::ref_ptr<osg::Vec3Array> normals = new osg::Vec3Array;
    normals->assign(4, osg::Vec3(0.0f, 0.0f, 1.0f));
    osg::ref_ptr<osg::Vec2Array> uvs = new osg::Vec2Array;
    uvs->assign(4, osg::Vec2(0.0f, 0.0f));
    geometry->setVertexAttribArray(0, vertices.get(), osg::Array::BIND_PER_VERTEX);
    geometry->setVertexAttribArray(1, normals.get(), osg::Array::BIND_PER_VERTEX);
    geometry->setVertexAttribArray(2, uvs.get(), osg::Array::BIND_PER_VERTEX);
    geometry->addPrimitiveSet(new osg::DrawArrays(GL_TRIANGLE_FAN, 0, 4));
    geometry->setInitialBound(osg::BoundingBox(-1, -1, -1, 1, 1, 1));
    auto encode = [](float v) { return std::pow(v, 1.0f / 2.2f); };
    geometry->getOrCreateStateSet()->addUniform(new osg::Uniform(
        "AlbedoColor_V4", osg::Vec4(encode(linear.x()), encode(linear.y()), encode(linear.z()), 1.0f)));
    return geometry;
}

class ToneMappingGLTest : public GLTest
{
protected:
    int contextWidth() const override { return kWidth; }
    int contextHeight() const override { return kHeight; }

    osg::ref_ptr<osg::Geode> makeScene(CKVProgramParam::Type type, std::vector<std::string> const& defines)
    {
        osg::ref_ptr<osg::Geode> root = new osg::Geode;
        osg::StateSet* stateSet = root->getOrCreateStateSet();
        bindBlock(*stateSet, 0, identities(7));
        bindBlock(*stateSet, 1, identities(2));
        bindBlock(*stateSet, 2, neutralLight());
        stateSet->addUniform(new osg::Uniform("camPos_W", osg::Vec3(0.0f, 0.0f, -1.0f)));
        // The reflection's mirror and water plane: no mirroring, no cut.
        stateSet->addUniform(new osg::Uniform("reflectMatrix", osg::Matrixf()));
        stateSet->addUniform(new osg::Uniform("waterPlane", osg::Vec4(0.0f, 0.0f, 0.0f, 0.0f)));
        stateSet->setDefine("_USE_NOT_BINDLESS_TEXTURE");
        for (std::string const& d : defines)
            stateSet->setDefine(d);
        CKVProgramParam const param(type);
        stateSet->setAttributeAndModes(mManager.getProgram(param).get());
        mManager.applyDefines(stateSet, param);
        for (int b = 0; b < kBands; ++b)
            root->addDrawable(band(b, bandLinear(b)));
        return root;
    }

    // Renders and compares the middle of every band with the reference.
    void expectReferenceCurve(CKVProgramParam::Type type, std::vector<std::string> const& defines)
    {
        osg::ref_ptr<osg::Geode> scene = makeScene(type, defines);
        osg::Camera* camera = context().camera();
        camera->setClearColor(osg::Vec4(1.0f, 0.0f, 1.0f, 1.0f));
        camera->setViewMatrix(osg::Matrixd::identity());
        camera->setProjectionMatrixAsOrtho(-1.0, 1.0, -1.0, 1.0, -1.0, 1.0);
        camera->setComputeNearFarMode(osg::CullSettings::DO_NOT_COMPUTE_NEAR_FAR);
        camera->setCullingMode(osg::CullSettings::NO_CULLING);
        osg::ref_ptr<osg::Image> image = context().renderFrames(scene.get(), 1, kWidth, kHeight);
        ASSERT_TRUE(image.valid()) << context().error();

        for (int b = 0; b < kBands; ++b) {
            unsigned char const* p = image->data(b * kBandWidth + kBandWidth / 2, kHeight / 2);
            osg::Vec3 const linear = bandLinear(b);
            for (int c = 0; c < 3; ++c) {
                int const expected = referenceByte(linear[c]);
                EXPECT_NEAR(p[c], expected, 2) << "linear " << linear[c] << " (band " << b << ", channel " << c
                                               << ")";
            }
        }
    }

    struct Manager : CKVProgramManager
    {
    } mManager;
};

TEST_F(ToneMappingGLTest, SurfaceFollowsTheReferenceCurveFromToeToShoulder)
{
    expectReferenceCurve(CKVProgramParam::kSurface, {});
}

// The extra outputs of the main pass are written after the colour; turning
// them on must leave the colour output as it was.
TEST_F(ToneMappingGLTest, SurfaceColourIsUnchangedByTheExtraOutputs)
{
    expectReferenceCurve(CKVProgramParam::kSurface, {"_USE_TAA", "_USE_SILHOUETTE", "_USE_VOLUMETRICLIGHT"});
}

TEST_F(ToneMappingGLTest, ReflectedSurfaceUsesTheSameCurve)
{
    expectReferenceCurve(CKVProgramParam::kReflectedSurface, {});
}

} // namespace
} // namespace Kelvor
