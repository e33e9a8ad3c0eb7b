#include "TestEffects.h"

#include "effects/CKVPostProcessNode.h"
#include "environment/CBGGeode.h"
#include "environment/CFullScreenTriangleGeometry.h"
#include "support/GLTest.h"
#include "support/GoldenImage.h"
#include "support/ImageCompare.h"
#include "viewer/CKVOSGCamera.h"

#include "TarnwickCommon/CKVAString.h"
#include "TarnwickCommon/Common.h"

#include <osg/Geode>
#include <osg/Geometry>
#include <osg/Program>

#include <string>

namespace Kelvor {
namespace {

using TestEffects::InvertGenerator;
using TestEffects::OptionPassGenerator;

constexpr int kSize = 48;

// A gradient over the whole view (every channel from 0 to 1 somewhere) with
// two flat patches in front: enough structure for a grading table to show
// any misplaced lookup. Fixed-function colours, no lighting.
osg::ref_ptr<osg::Geode> makeScene()
{
    osg::ref_ptr<osg::Geode> geode = new osg::Geode;
    auto quad = [&](float x0, float y0, float x1, float y1, float z, osg::Vec4 const (&c)[4]) {
        osg::ref_ptr<osg::Geometry> geometry = new osg::Geometry;
        osg::ref_ptr<osg::Vec3Array> vertices = new osg::Vec3Array;
        vertices->push_back(osg::Vec3(x0, y0, z));
        vertices->push_back(osg::Vec3(x1, y0, z));
        vertices->push_back(osg::Vec3(x1, y1, z));
        vertices->push_back(osg::Vec3(x0, y1, z));
        osg::ref_ptr<osg::Vec4Array> colours = new osg::Vec4Array(4, c);
        geometry->setVertexArray(vertices.get());
        geometry->setColorArray(colours.get(), osg::Array::BIND_PER_VERTEX);
        geometry->addPrimitiveSet(new osg::DrawArrays(GL_QUADS, 0, 4));
        geode->addDrawable(geometry.get());
    };
    osg::Vec4 const gradient[4] = {{0, 0, 1, 1}, {1, 0, 0, 1}, {1, 1, 0, 1}, {0, 1, 1, 1}};
    quad(-1.2f, -1.2f, 1.2f, 1.2f, -1.0f, gradient);
    osg::Vec4 const orange(0.9f, 0.45f, 0.1f, 1.0f);
    osg::Vec4 const teal(0.1f, 0.6f, 0.55f, 1.0f);
    osg::Vec4 const flatOrange[4] = {orange, orange, orange, orange};
    osg::Vec4 const flatTeal[4] = {teal, teal, teal, teal};
    quad(-0.6f, -0.6f, 0.0f, 0.2f, 0.0f, flatOrange);
    quad(0.1f, -0.2f, 0.7f, 0.7f, 0.5f, flatTeal);
    osg::StateSet* stateSet = geode->getOrCreateStateSet();
    stateSet->setMode(GL_LIGHTING, osg::StateAttribute::OFF);
    return geode;
}

std::string resource(char const* name)
{
    CKVAString directory;
    Common::getResourceDirectory(directory);
    return std::string(directory.c_str()) + name;
}

class CKVPostProcessNodeGLTest : public GLTest
{
protected:
    int contextWidth() const override { return kSize; }
    int contextHeight() const override { return kSize; }

    void SetUp() override
    {
        GLTest::SetUp();
        if (IsSkipped() || HasFatalFailure())
            return;
        osg::Camera* camera = context().camera();
        camera->setClearColor(osg::Vec4(0.0f, 0.0f, 0.0f, 1.0f));
        camera->setViewMatrix(osg::Matrixd::lookAt(osg::Vec3d(0, 0, 5), osg::Vec3d(0, 0, 0), osg::Vec3d(0, 1, 0)));
        camera->setProjectionMatrixAsOrtho(-1.0, 1.0, -1.0, 1.0, 0.1, 100.0);
        context().viewer()->setCameraManipulator(nullptr);
        mMain = new CKVOSGCamera;
        mMain->setViewport(0, 0, kSize, kSize);
        mMain->setClearColor(camera->getClearColor());
        mMain->setProjectionMatrix(camera->getProjectionMatrix());
        mMain->setViewMatrix(camera->getViewMatrix());
        mScene = makeScene();
        mRoot = new CKVPostProcessNode(mMain.get(), new osg::FloatArray(112), 0);
        mRoot->addChild(mScene.get());
    }

    osg::ref_ptr<osg::Image> render(osg::Node* scene, int frames = 2)
    {
        osg::ref_ptr<osg::Image> image = context().renderFrames(scene, frames, kSize, kSize);
        EXPECT_TRUE(image.valid()) << context().error();
        return image;
    }

    bool written(osg::Texture* texture)
    {
        return texture->getTextureObject(context().state()->getContextID()) != nullptr;
    }

    // Level 0 of a texture as RGBA8, and its size.
    osg::ref_ptr<osg::Image> readTexture(osg::Texture2D* texture, int& width, int& height)
    {
        osg::ref_ptr<osg::Image> image = new osg::Image;
        width = height = 0;
        context().runWithContext([&](osg::State& state) {
            osg::Texture::TextureObject* object = texture->getTextureObject(state.getContextID());
            if (!object)
                return;
            glBindTexture(GL_TEXTURE_2D, object->id());
            glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_WIDTH, &width);
            glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_HEIGHT, &height);
            if (texture->getInternalFormat() != GL_DEPTH_COMPONENT24) {
                image->allocateImage(width, height, 1, GL_RGBA, GL_UNSIGNED_BYTE);
                glGetTexImage(GL_TEXTURE_2D, 0, GL_RGBA, GL_UNSIGNED_BYTE, image->data());
            }
            glBindTexture(GL_TEXTURE_2D, 0);
        });
        return image;
    }

    static osg::ref_ptr<osg::Image> inverted(osg::Image const& image)
    {
        osg::ref_ptr<osg::Image> result = new osg::Image(image, osg::CopyOp::DEEP_COPY_ALL);
        unsigned char* data = result->data();
        for (unsigned int i = 0; i < result->getTotalSizeInBytes(); ++i)
            if (i % 4 != 3)
                data[i] = static_cast<unsigned char>(255 - data[i]);
        return result;
    }

    ::testing::AssertionResult same(osg::Image const& actual, osg::Image const& expected, int steps)
    {
        ImageTolerance tolerance;
        tolerance.maxChannelDifference = steps;
        ImageCompareResult const result = ImageCompare().compare(actual, expected, tolerance, testName());
        if (result.passed)
            return ::testing::AssertionSuccess();
        return ::testing::AssertionFailure() << result.message;
    }

    static std::string testName()
    {
        return std::string("postprocess_") + ::testing::UnitTest::GetInstance()->current_test_info()->name();
    }

    osg::ref_ptr<CKVOSGCamera> mMain;
    osg::ref_ptr<osg::Geode> mScene;
    osg::ref_ptr<CKVPostProcessNode> mRoot;
};

TEST_F(CKVPostProcessNodeGLTest, WithNothingOnTheSceneGoesStraightToTheWindow)
{
    osg::ref_ptr<osg::Image> direct = render(mScene.get());
    osg::ref_ptr<osg::Image> throughRoot = render(mRoot.get());
    ASSERT_TRUE(direct.valid() && throughRoot.valid());
    EXPECT_TRUE(same(*throughRoot, *direct, 0));
    expectMatchesGolden(*throughRoot, "postprocess_scene");
    // The scene pass never ran: its targets were never even made.
    EXPECT_FALSE(written(mRoot->getColorTexture()));
    EXPECT_FALSE(written(mRoot->getDepthTexture()));
}

TEST_F(CKVPostProcessNodeGLTest, GradingWaitsForATableThenAnIdentityTableChangesNothing)
{
    osg::ref_ptr<osg::Image> plain = render(mScene.get());
    mRoot->setColorGradingEnabled(true);
    // Before a table is given the frame goes out ungraded, not black.
    osg::ref_ptr<osg::Image> noTable = render(mRoot.get());
    ASSERT_TRUE(noTable.valid());
    EXPECT_TRUE(same(*noTable, *plain, 0));
    ASSERT_TRUE(mRoot->setColorGrading(resource("/colorgrading/identity.png")));
    osg::ref_ptr<osg::Image> graded = render(mRoot.get());
    ASSERT_TRUE(plain.valid() && graded.valid());
    // Linear filtering between table texels of 1/63 costs a step or two.
    EXPECT_TRUE(same(*graded, *plain, 3));

    // The scene really went through the colour target.
    int width = 0;
    int height = 0;
    osg::ref_ptr<osg::Image> colour = readTexture(mRoot->getColorTexture(), width, height);
    EXPECT_EQ(width, kSize);
    EXPECT_EQ(height, kSize);
    EXPECT_TRUE(same(*colour, *plain, 0));
    EXPECT_TRUE(written(mRoot->getDepthTexture()));
}

TEST_F(CKVPostProcessNodeGLTest, InvertingTableInvertsEveryPixel)
{
    osg::ref_ptr<osg::Image> plain = render(mScene.get());
    mRoot->setColorGradingEnabled(true);
    ASSERT_TRUE(mRoot->setColorGrading(resource("/colorgrading/invert.png")));
    osg::ref_ptr<osg::Image> graded = render(mRoot.get());
    ASSERT_TRUE(plain.valid() && graded.valid());
    EXPECT_TRUE(same(*graded, *inverted(*plain), 3));
    expectMatchesGolden(*graded, "postprocess_graded_invert", ImageTolerance{3, 0.0});

    // Grading off again: the chain steps aside and the picture is the plain one.
    mRoot->setColorGradingEnabled(false);
    osg::ref_ptr<osg::Image> off = render(mRoot.get());
    EXPECT_TRUE(same(*off, *plain, 0));
}

TEST_F(CKVPostProcessNodeGLTest, FullScreenEffectPlugsIntoTheChain)
{
    osg::ref_ptr<osg::Image> plain = render(mScene.get());
    osg::ref_ptr<InvertGenerator> effect = new InvertGenerator(kSize, kSize, 24);
    mRoot->setDOFGenerator(effect.get());
    mRoot->setDOFEnabled(true);

    // First frame: the scene target has no texture yet when the effect is
    // culled, but it is made in the scene pass before the effect draws.
    osg::ref_ptr<osg::Image> once = render(mRoot.get(), 1);
    EXPECT_GE(effect->invert()->mDraws, 1);
    osg::ref_ptr<osg::Image> image = render(mRoot.get());
    ASSERT_TRUE(plain.valid() && image.valid());
    EXPECT_TRUE(same(*image, *inverted(*plain), 0));

    // With the inverting table after it the two cancel out.
    mRoot->setColorGradingEnabled(true);
    ASSERT_TRUE(mRoot->setColorGrading(resource("/colorgrading/invert.png")));
    image = render(mRoot.get());
    EXPECT_TRUE(same(*image, *plain, 3));
}

TEST_F(CKVPostProcessNodeGLTest, ResizeReachesEveryTarget)
{
    osg::ref_ptr<InvertGenerator> effect = new InvertGenerator(kSize, kSize, 24);
    mRoot->setDOFGenerator(effect.get());
    mRoot->setDOFEnabled(true);
    mRoot->setTAAEnabled(true);
    ASSERT_TRUE(render(mRoot.get()).valid());

    int const width = 40;
    int const height = 24;
    mMain->setViewport(0, 0, width, height);
    mRoot->resize(width, height);
    ASSERT_TRUE(context().renderFrames(mRoot.get(), 2, width, height).valid());
    for (osg::Texture2D* texture : {mRoot->getColorTexture(), mRoot->getVelocityTexture(),
                                    mRoot->getSilhouetteTexture(), mRoot->getVolumetricLightTexture(),
                                    mRoot->getDepthTexture(), effect->getOutput()})
    {
        int w = 0;
        int h = 0;
        readTexture(texture, w, h);
        EXPECT_EQ(w, width);
        EXPECT_EQ(h, height);
    }
}

TEST_F(CKVPostProcessNodeGLTest, ScenePassGeneratorDrawsItsSubjectIntoItsTarget)
{
    // A flat colour over the pass's whole target.
    osg::ref_ptr<CBGGeode> subject = new CBGGeode;
    subject->addDrawable(new CFullScreenTriangleGeometry);
    osg::ref_ptr<osg::Program> program = new osg::Program;
    program->addShader(new osg::Shader(osg::Shader::VERTEX, CKVFullScreenGeometry::triangleVertexSource()));
    program->addShader(new osg::Shader(osg::Shader::FRAGMENT, "#version 420 core\nout vec4 c;\n"
                                                              "void main() { c = vec4(0.2, 0.4, 0.8, 1.0); }\n"));
    subject->getOrCreateStateSet()->setAttribute(program.get());

    osg::ref_ptr<OptionPassGenerator> generator = new OptionPassGenerator(subject.get());
    osg::Camera* camera = generator->pass()->getCamera();
    osg::ref_ptr<osg::Texture2D> target = new osg::Texture2D;
    target->setTextureSize(16, 8);
    target->setInternalFormat(GL_RGBA8);
    camera->setViewport(0, 0, 16, 8);
    camera->setRenderTargetImplementation(osg::Camera::FRAME_BUFFER_OBJECT);
    camera->setReferenceFrame(osg::Transform::ABSOLUTE_RF);
    camera->attach(osg::Camera::COLOR_BUFFER0, target.get());
    mRoot->addChild(generator.get());

    ASSERT_TRUE(render(mRoot.get()).valid());
    int width = 0;
    int height = 0;
    osg::ref_ptr<osg::Image> image = readTexture(target.get(), width, height);
    ASSERT_EQ(width, 16);
    ASSERT_EQ(height, 8);
    osg::Vec4 const expected(0.2f, 0.4f, 0.8f, 1.0f);
    for (int y = 0; y < height; y += 7)
        for (int x = 0; x < width; x += 5)
            for (int c = 0; c < 4; ++c)
                EXPECT_NEAR(image->getColor(x, y)[c], expected[c], 1.0f / 255.0f) << x << "," << y;
    EXPECT_EQ(generator->mFrames, 2);
}

TEST_F(CKVPostProcessNodeGLTest, ExtraOutputsLandInTheirOwnTargets)
{
    // Outputs at fixed locations, as the surface shaders write them; with no
    // velocity target, location 2 must still reach the edge target and
    // location 3 the volumetric light target.
    osg::ref_ptr<CBGGeode> writer = new CBGGeode;
    writer->addDrawable(new CFullScreenTriangleGeometry);
    osg::ref_ptr<osg::Program> program = new osg::Program;
    program->addShader(new osg::Shader(osg::Shader::VERTEX, CKVFullScreenGeometry::triangleVertexSource()));
    program->addShader(new osg::Shader(osg::Shader::FRAGMENT,
                                       "#version 420 core\n"
                                       "layout(location = 0) out vec4 colour;\n"
                                       "layout(location = 1) out vec4 velocity;\n"
                                       "layout(location = 2) out vec4 normal;\n"
                                       "layout(location = 3) out vec4 light;\n"
                                       "void main() {\n"
                                       "  colour = vec4(1.0, 0.0, 0.0, 1.0);\n"
                                       "  velocity = vec4(0.5, 0.5, 0.0, 1.0);\n"
                                       "  normal = vec4(0.0, 1.0, 0.0, 1.0);\n"
                                       "  light = vec4(0.0, 0.0, 1.0, 1.0);\n"
                                       "}\n"));
    writer->getOrCreateStateSet()->setAttribute(program.get());
    mRoot->removeChild(mScene.get());
    mRoot->addChild(writer.get());
    mRoot->setVolumetricLightEnabled(true);
    ASSERT_TRUE(render(mRoot.get()).valid());

    auto centre = [&](osg::Texture2D* texture) {
        int width = 0;
        int height = 0;
        osg::ref_ptr<osg::Image> image = readTexture(texture, width, height);
        return width > 0 ? image->getColor(width / 2, height / 2) : osg::Vec4(-1, -1, -1, -1);
    };
    EXPECT_EQ(centre(mRoot->getColorTexture()), osg::Vec4(1, 0, 0, 1));
    EXPECT_EQ(centre(mRoot->getSilhouetteTexture()), osg::Vec4(0, 1, 0, 1));
    EXPECT_EQ(centre(mRoot->getVolumetricLightTexture()), osg::Vec4(0, 0, 1, 1));
}

} // namespace
} // namespace Kelvor
