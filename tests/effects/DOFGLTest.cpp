// Depth of field on the post-process root, over strips of flat colour that
// stand at known depths in front of a perspective camera: the circle of
// confusion read back against a C++ reference, the sharp band, and a
// golden picture across a depth step.
#include "effects/CKVDOFGenerator.h"
#include "effects/CKVPostProcessNode.h"
#include "effects/DOFGeometry.h"
#include "support/GLTest.h"
#include "support/GoldenImage.h"
#include "viewer/CKVOSGCamera.h"

#include <osg/Geode>
#include <osg/Geometry>

#include <cmath>
#include <vector>

namespace Kelvor {
namespace {

constexpr int kWidth = 240;
constexpr int kHeight = 120;
constexpr double kFovy = 50.0;
constexpr int kStrips = 12;

// The reference circle of confusion of an eye depth, for the band that the
// fractions cut out of the depth range [zNear, zFar]: 1 in front of the
// near plane falling to 0 at the near end, 0 up to the far begin, then
// rising to 1 at the far plane.
osg::Vec2 referenceCoC(double depth, double zNear, double zFar, double nearEnd, double farBegin)
{
    double const nearEndDepth = zNear + nearEnd * (zFar - zNear);
    double const farBeginDepth = zNear + farBegin * (zFar - zNear);
    double nearCoC = (nearEndDepth - depth) / (nearEndDepth - zNear);
    double farCoC = (depth - farBeginDepth) / (zFar - farBeginDepth);
    auto clamp01 = [](double v) { return std::max(0.0, std::min(1.0, v)); };
    return osg::Vec2(float(clamp01(nearCoC)), float(clamp01(farCoC)));
}

// Strip `i` of `kStrips` across the picture, at eye depth `depths[i]`,
// reaching past the top and bottom. Flat colours, no lighting.
osg::ref_ptr<osg::Geode> makeStrips(std::vector<double> const& depths, std::vector<osg::Vec4> const& colours)
{
    osg::ref_ptr<osg::Geode> geode = new osg::Geode;
    double const tanHalf = std::tan(osg::DegreesToRadians(kFovy) * 0.5);
    double const aspect = double(kWidth) / kHeight;
    int const count = static_cast<int>(depths.size());
    for (int i = 0; i < count; ++i) {
        double const d = depths[i];
        double const x0 = (2.0 * i / count - 1.0) * d * tanHalf * aspect;
        double const x1 = (2.0 * (i + 1) / count - 1.0) * d * tanHalf * aspect;
        double const y = 1.2 * d * tanHalf;
        osg::ref_ptr<osg::Geometry> geometry = new osg::Geometry;
        osg::ref_ptr<osg::Vec3Array> vertices = new osg::Vec3Array;
        vertices->push_back(osg::Vec3(x0, -y, -d));
        vertices->push_back(osg::Vec3(x1, -y, -d));
        vertices->push_back(osg::Vec3(x1, y, -d));
        vertices->push_back(osg::Vec3(x0, y, -d));
        osg::ref_ptr<osg::Vec4Array> colour = new osg::Vec4Array(1, &colours[i % colours.size()]);
        geometry->setVertexArray(vertices.get());
        geometry->setColorArray(colour.get(), osg::Array::BIND_OVERALL);
        geometry->addPrimitiveSet(new osg::DrawArrays(GL_QUADS, 0, 4));
        geode->addDrawable(geometry.get());
    }
    geode->getOrCreateStateSet()->setMode(GL_LIGHTING, osg::StateAttribute::OFF);
    return geode;
}

std::vector<osg::Vec4> const kStripColours = {{0.9f, 0.2f, 0.1f, 1.0f}, {0.1f, 0.5f, 0.9f, 1.0f},
                                              {0.95f, 0.9f, 0.2f, 1.0f}, {0.1f, 0.7f, 0.3f, 1.0f}};

class DOFGLTest : public GLTest
{
protected:
    int contextWidth() const override { return kWidth; }
    int contextHeight() const override { return kHeight; }

    void SetUp() override
    {
        GLTest::SetUp();
        if (IsSkipped() || HasFatalFailure())
            return;
        osg::Camera* camera = context().camera();
        camera->setClearColor(osg::Vec4(0.0f, 0.0f, 0.0f, 1.0f));
        camera->setViewMatrix(osg::Matrixd::identity());
        camera->setProjectionMatrixAsPerspective(kFovy, double(kWidth) / kHeight, 0.5, 100.0);
        // The root alone clamps the planes, as in the render context.
        camera->setComputeNearFarMode(osg::CullSettings::DO_NOT_COMPUTE_NEAR_FAR);
        context().viewer()->setCameraManipulator(nullptr);
        mMain = new CKVOSGCamera;
        mMain->setViewport(0, 0, kWidth, kHeight);
        mMain->setProjectionMatrix(camera->getProjectionMatrix());
        mMain->setComputeNearFarMode(osg::CullSettings::DO_NOT_COMPUTE_NEAR_FAR);
        mRoot = new CKVPostProcessNode(mMain.get(), new osg::FloatArray(112), 0);
        mRoot->setDOFEnabled(true);
    }

    osg::ref_ptr<osg::Image> render()
    {
        osg::ref_ptr<osg::Image> image = context().renderFrames(mRoot.get(), 3, kWidth, kHeight);
        EXPECT_TRUE(image.valid()) << context().error();
        return image;
    }

    // Level 0 of a colour texture as RGBA8.
    osg::ref_ptr<osg::Image> readTexture(osg::Texture2D* texture)
    {
        osg::ref_ptr<osg::Image> image;
        context().runWithContext([&](osg::State& state) {
            osg::Texture::TextureObject* object = texture->getTextureObject(state.getContextID());
            if (!object)
                return;
            GLint width = 0;
            GLint height = 0;
            glBindTexture(GL_TEXTURE_2D, object->id());
            glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_WIDTH, &width);
            glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_HEIGHT, &height);
            image = new osg::Image;
            image->allocateImage(width, height, 1, GL_RGBA, GL_UNSIGNED_BYTE);
            glGetTexImage(GL_TEXTURE_2D, 0, GL_RGBA, GL_UNSIGNED_BYTE, image->data());
            glBindTexture(GL_TEXTURE_2D, 0);
        });
        return image;
    }

    DOFGeometry* dof() const
    {
        return static_cast<CKVDOFGenerator*>(mRoot->getDOFGenerator())->getDOFGeometry();
    }

    static int stripCentre(int strip) { return (2 * strip + 1) * kWidth / (2 * kStrips); }

    osg::ref_ptr<CKVOSGCamera> mMain;
    osg::ref_ptr<CKVPostProcessNode> mRoot;
};

} // namespace

// The first step's circle of confusion at the middle of each strip matches
// the reference for the planes the frame was drawn with. With the near end
// below the far begin, the strips between are sharp: zero blur there, and
// the output keeps the scene's colour.
TEST_F(DOFGLTest, CircleOfConfusionFollowsTheBandAndTheBandStaysSharp)
{
    float const kNearEnd = 0.25f;
    float const kFarBegin = 0.5f;
    std::vector<double> depths;
    for (int i = 0; i < kStrips; ++i)
        depths.push_back(2.0 + i);
    mRoot->addChild(makeStrips(depths, kStripColours));
    mRoot->setDOFNearEnd(kNearEnd);
    mRoot->setDOFFarBegin(kFarBegin);
    mRoot->setDOFBlurSize(1.0f);
    ASSERT_TRUE(render().valid());

    osg::Vec2f nearFar;
    mRoot->getNearFarUniform()->get(nearFar);
    ASSERT_LT(nearFar.x(), 2.0);
    ASSERT_GT(nearFar.y(), 13.0);
    osg::ref_ptr<osg::Image> coc = readTexture(dof()->getCoCTexture());
    osg::ref_ptr<osg::Image> colour = readTexture(mRoot->getColorTexture());
    osg::ref_ptr<osg::Image> output = readTexture(dof()->getOutput());
    ASSERT_TRUE(coc.valid() && colour.valid() && output.valid());
    ASSERT_EQ(coc->s(), kWidth);

    std::vector<bool> sharpStrip(kStrips, false);
    int blurredNear = 0;
    int blurredFar = 0;
    int const y = kHeight / 2;
    for (int i = 0; i < kStrips; ++i) {
        int const x = stripCentre(i);
        osg::Vec2 const expected = referenceCoC(depths[i], nearFar.x(), nearFar.y(), kNearEnd, kFarBegin);
        osg::Vec4 const actual = coc->getColor(x, y);
        // 8-bit storage, and the depth buffer's rounding.
        EXPECT_NEAR(actual.r(), expected.x(), 2.5 / 255) << "near, strip " << i << " at depth " << depths[i];
        EXPECT_NEAR(actual.g(), expected.y(), 2.5 / 255) << "far, strip " << i << " at depth " << depths[i];
        blurredNear += expected.x() > 0.1f ? 1 : 0;
        blurredFar += expected.y() > 0.1f ? 1 : 0;
        sharpStrip[i] = expected == osg::Vec2(0, 0);
    }
    // The near blur reaches over the edges of objects in focus by design, so
    // only strips with sharp neighbours must come out untouched.
    int sharp = 0;
    for (int i = 1; i + 1 < kStrips; ++i) {
        if (!sharpStrip[i - 1] || !sharpStrip[i] || !sharpStrip[i + 1])
            continue;
        ++sharp;
        int const x = stripCentre(i);
        unsigned char const* in = colour->data(x, y);
        unsigned char const* out = output->data(x, y);
        EXPECT_EQ(osg::Vec3i(in[0], in[1], in[2]), osg::Vec3i(out[0], out[1], out[2])) << "strip " << i;
    }
    EXPECT_GE(sharp, 3);
    EXPECT_GE(blurredNear, 2);
    EXPECT_GE(blurredFar, 2);
}

// A near plate at the left against a far, finely striped wall: the wall
// blurs, the plate stays sharp.
TEST_F(DOFGLTest, FarWallBlursBehindASharpPlate)
{
    int const kWallStrips = 24;
    std::vector<double> depths(kWallStrips, 12.0);
    for (int i = 0; i < kWallStrips / 3; ++i)
        depths[i] = 2.5;
    mRoot->addChild(makeStrips(depths, kStripColours));
    mRoot->setDOFNearEnd(0.0f);
    mRoot->setDOFFarBegin(0.3f);
    mRoot->setDOFBlurSize(1.5f);
    osg::ref_ptr<osg::Image> image = render();
    ASSERT_TRUE(image.valid());
    expectMatchesGolden(*image, "dof_depth_step", ImageTolerance{10, 0.01});
}

} // namespace Kelvor
