#include "support/GLTest.h"
#include "support/GoldenImage.h"

#include <gtest/gtest.h>

#include <osg/BufferObject>
#include <osg/GLExtensions>
#include <osg/Geode>
#include <osg/Geometry>
#include <osg/Program>

#include <array>
#include <cstdio>
#include <cstring>
#include <string>

namespace Kelvor {
namespace {

constexpr int kImageSize = 64;
osg::Vec4 const kClearColour(0.1f, 0.2f, 0.3f, 1.0f);

// Corners in clip space (the camera below makes world = clip); red, green, blue.
osg::Vec2 const kCorners[3] = {{-0.8f, -0.8f}, {0.8f, -0.8f}, {0.0f, 0.8f}};

// The fragment shader swaps red and blue: were the program rejected, OSG would
// fall back to fixed function and draw the unswapped colours, which the pixel
// checks tell apart.
char const* const kVertexShader = R"(#version 120
varying vec4 vColour;
void main()
{
    vColour = gl_Color;
    gl_Position = gl_ModelViewProjectionMatrix * gl_Vertex;
}
)";

char const* const kFragmentShader = R"(#version 120
varying vec4 vColour;
void main()
{
    gl_FragColor = vec4(vColour.bgr, 1.0);
}
)";

osg::ref_ptr<osg::Node> makeTriangleScene()
{
    osg::ref_ptr<osg::Vec3Array> vertices = new osg::Vec3Array;
    for (osg::Vec2 const& corner : kCorners)
        vertices->push_back(osg::Vec3(corner, 0.0f));
    osg::ref_ptr<osg::Vec4Array> colours = new osg::Vec4Array;
    colours->push_back(osg::Vec4(1, 0, 0, 1));
    colours->push_back(osg::Vec4(0, 1, 0, 1));
    colours->push_back(osg::Vec4(0, 0, 1, 1));

    osg::ref_ptr<osg::Geometry> triangle = new osg::Geometry;
    triangle->setVertexArray(vertices.get());
    triangle->setColorArray(colours.get(), osg::Array::BIND_PER_VERTEX);
    triangle->addPrimitiveSet(new osg::DrawArrays(GL_TRIANGLES, 0, 3));

    osg::ref_ptr<osg::Program> program = new osg::Program;
    program->addShader(new osg::Shader(osg::Shader::VERTEX, kVertexShader));
    program->addShader(new osg::Shader(osg::Shader::FRAGMENT, kFragmentShader));

    osg::ref_ptr<osg::Geode> geode = new osg::Geode;
    geode->addDrawable(triangle.get());
    geode->getOrCreateStateSet()->setAttributeAndModes(program.get());
    geode->getOrCreateStateSet()->setMode(GL_LIGHTING, osg::StateAttribute::OFF);
    return geode;
}

void useClipSpaceCamera(osg::Camera& camera)
{
    camera.setClearColor(kClearColour);
    camera.setViewMatrix(osg::Matrixd::identity());
    camera.setProjectionMatrixAsOrtho2D(-1.0, 1.0, -1.0, 1.0);
    camera.setComputeNearFarMode(osg::CullSettings::DO_NOT_COMPUTE_NEAR_FAR);
}

float signedArea(osg::Vec2 const& a, osg::Vec2 const& b, osg::Vec2 const& c)
{
    return (b.x() - a.x()) * (c.y() - a.y()) - (c.x() - a.x()) * (b.y() - a.y());
}

// Interpolated colour at the centre of pixel (s, t), after the shader's swap:
// the barycentric weights of the red, green and blue corners, reversed.
osg::Vec4 expectedTriangleColour(int s, int t)
{
    osg::Vec2 const p((s + 0.5f) / kImageSize * 2.0f - 1.0f, (t + 0.5f) / kImageSize * 2.0f - 1.0f);
    osg::Vec2 const& a = kCorners[0];
    osg::Vec2 const& b = kCorners[1];
    osg::Vec2 const& c = kCorners[2];
    float const total = signedArea(a, b, c);
    float const red = signedArea(p, b, c) / total;
    float const green = signedArea(a, p, c) / total;
    float const blue = signedArea(a, b, p) / total;
    return osg::Vec4(blue, green, red, 1.0f);
}

void expectPixel(osg::Image const& image, int s, int t, osg::Vec4 const& expected, int tolerance)
{
    osg::Vec4 const actual = image.getColor(s, t);
    for (int c = 0; c < 4; ++c)
    {
        EXPECT_NEAR(actual[c] * 255.0f, expected[c] * 255.0f, tolerance)
            << "pixel (" << s << ", " << t << ") channel " << c;
    }
}

class TriangleGLTest : public GLTest
{
};

TEST_F(TriangleGLTest, DrawsThroughItsShaderAndMatchesGolden)
{
    osg::ref_ptr<osg::Node> scene = makeTriangleScene();
    useClipSpaceCamera(*context().camera());

    osg::ref_ptr<osg::Image> image = context().renderFrames(scene.get(), 2, kImageSize, kImageSize);

    ASSERT_TRUE(image.valid()) << context().error();
    ASSERT_EQ(image->s(), kImageSize);
    ASSERT_EQ(image->t(), kImageSize);
    expectPixel(*image, kImageSize / 2, kImageSize / 2, expectedTriangleColour(kImageSize / 2, kImageSize / 2), 3);
    // Near the red corner (bottom left): rows are bottom-up.
    expectPixel(*image, 8, 8, expectedTriangleColour(8, 8), 3);
    expectPixel(*image, 0, 0, kClearColour, 1);
    expectPixel(*image, kImageSize - 1, kImageSize - 1, kClearColour, 1);
    // Edges may rasterise a pixel differently from one Mesa to the next.
    expectMatchesGolden(*image, "triangle", ImageTolerance{3, 0.01});
}

TEST_F(TriangleGLTest, ContextIsCompatibilityProfileOfAtLeast42)
{
    GLint profile = 0;
    std::string version;
    ASSERT_TRUE(context().runWithContext([&](osg::State&) {
        glGetIntegerv(GL_CONTEXT_PROFILE_MASK, &profile);
        version = reinterpret_cast<char const*>(glGetString(GL_VERSION));
    }));

    EXPECT_TRUE(profile & GL_CONTEXT_COMPATIBILITY_PROFILE_BIT) << version;
    int major = 0;
    int minor = 0;
    ASSERT_EQ(std::sscanf(version.c_str(), "%d.%d", &major, &minor), 2) << version;
    EXPECT_GE(major * 10 + minor, 42) << version;
}

// Later tests read GPU results back this way.
TEST_F(TriangleGLTest, RunsGLCodeWithTheContextCurrent)
{
    std::array<float, 4> const written = {1.5f, -2.0f, 3.25f, 1e6f};
    std::array<float, 4> read = {};
    GLenum error = GL_NO_ERROR;
    ASSERT_TRUE(context().runWithContext([&](osg::State& state) {
        osg::GLExtensions* gl = state.get<osg::GLExtensions>();
        GLuint buffer = 0;
        gl->glGenBuffers(1, &buffer);
        gl->glBindBuffer(GL_ARRAY_BUFFER_ARB, buffer);
        gl->glBufferData(GL_ARRAY_BUFFER_ARB, sizeof(written), written.data(), GL_STATIC_DRAW_ARB);
        gl->glGetBufferSubData(GL_ARRAY_BUFFER_ARB, 0, sizeof(read), read.data());
        gl->glBindBuffer(GL_ARRAY_BUFFER_ARB, 0);
        gl->glDeleteBuffers(1, &buffer);
        error = glGetError();
    }));

    EXPECT_EQ(error, static_cast<GLenum>(GL_NO_ERROR));
    EXPECT_EQ(read, written);
}

TEST_F(TriangleGLTest, RefusesASizeLargerThanTheWindow)
{
    osg::ref_ptr<osg::Node> scene = makeTriangleScene();

    EXPECT_FALSE(context().renderFrames(scene.get(), 1, context().width() + 1, 8).valid());
    EXPECT_NE(context().error().find("window"), std::string::npos) << context().error();
}

// The second context reuses the first one's context id. Had teardown left the
// scene's buffer and program names cached for that id, the second context
// would draw with names that do not exist in it.
TEST_F(TriangleGLTest, SceneDrawsAgainInANewContextAfterTeardown)
{
    osg::ref_ptr<osg::Node> scene = makeTriangleScene();
    int const centre = kImageSize / 2;

    useClipSpaceCamera(*context().camera());
    osg::ref_ptr<osg::Image> first = context().renderFrames(scene.get(), 1, kImageSize, kImageSize);
    ASSERT_TRUE(first.valid()) << context().error();
    unsigned int const firstId = context().state()->getContextID();
    context().close();

    GLTestContext second(kImageSize, kImageSize);
    ASSERT_TRUE(second.valid()) << second.error();
    EXPECT_EQ(second.state()->getContextID(), firstId);
    // Occupy the low GL names, so that a stale name would reach one of these
    // empty objects instead of happening to match a fresh one.
    ASSERT_TRUE(second.runWithContext([](osg::State& state) {
        osg::GLExtensions* gl = state.get<osg::GLExtensions>();
        GLuint buffers[8] = {};
        gl->glGenBuffers(8, buffers);
        for (int i = 0; i < 4; ++i)
            gl->glCreateProgram();
    }));
    useClipSpaceCamera(*second.camera());
    osg::ref_ptr<osg::Image> image = second.renderFrames(scene.get(), 1);
    ASSERT_TRUE(image.valid()) << second.error();
    second.close();

    expectPixel(*image, centre, centre, expectedTriangleColour(centre, centre), 3);
    EXPECT_TRUE(ImageCompare().compare(*image, *first, ImageTolerance{0, 0.0}, "second-context").passed);
}

} // namespace
} // namespace Kelvor
