#include "support/GLTest.h"

#include "viewer/DepthFunc.h"
#include "viewer/DepthMask.h"
#include "viewer/DepthRange.h"

#include "FlatSquare.h"

#include <gtest/gtest.h>

#include <osg/Geode>
#include <osg/Geometry>
#include <osg/Program>

#include <string>

namespace Kelvor {
namespace {

constexpr int kImageSize = 64;
osg::Vec4 const kClear(0, 0, 0, 1);

// Vertices are clip coordinates: a quad at z lands at window depth (z + 1) / 2
// within the depth range.
char const* const kVertexShader = R"(#version 330 compatibility
void main()
{
    gl_Position = vec4(gl_Vertex.xyz, 1.0);
    gl_FrontColor = gl_Color;
}
)";

char const* const kFragmentShader = R"(#version 330 compatibility
void main()
{
    gl_FragColor = gl_Color;
}
)";

// One quarter of the window: column and row 0 or 1.
osg::ref_ptr<osg::Geode> makeQuarter(int column, int row, float z, osg::Vec4 const& colour)
{
    osg::ref_ptr<osg::Geode> geode = viewertest::makeFlatSquare(osg::Vec3(column - 1.0f, row - 1.0f, z), 1.0f, colour);
    geode->setCullingActive(false);
    return geode;
}

osg::ref_ptr<osg::Group> makeRoot()
{
    osg::ref_ptr<osg::Group> root = new osg::Group;
    osg::ref_ptr<osg::Program> program = new osg::Program;
    program->addShader(new osg::Shader(osg::Shader::VERTEX, kVertexShader));
    program->addShader(new osg::Shader(osg::Shader::FRAGMENT, kFragmentShader));
    root->getOrCreateStateSet()->setAttributeAndModes(program.get());
    root->setCullingActive(false);
    return root;
}

// Reads the depth buffer at the end of the camera's draw.
class DepthReadBack : public osg::Camera::DrawCallback
{
public:
    DepthReadBack()
        : mImage(new osg::Image)
    {
    }
    void operator()(osg::RenderInfo&) const override
    {
        mImage->readPixels(0, 0, kImageSize, kImageSize, GL_DEPTH_COMPONENT, GL_FLOAT);
    }
    float depthAt(int column, int row) const
    {
        int const centre = kImageSize / 4;
        return *reinterpret_cast<float const*>(mImage->data(centre + column * kImageSize / 2,
                                                            centre + row * kImageSize / 2));
    }

private:
    osg::ref_ptr<osg::Image> mImage;
};

class DepthAttributesGLTest : public GLTest
{
protected:
    void SetUp() override
    {
        GLTest::SetUp();
        if (IsSkipped() || HasFatalFailure())
            return;
        context().camera()->setClearColor(kClear);
        context().camera()->setPostDrawCallback(mDepth.get());
    }

    void TearDown() override
    {
        if (context().camera() != nullptr)
            context().camera()->setPostDrawCallback(nullptr);
        GLTest::TearDown();
    }

    osg::ref_ptr<osg::Image> render(osg::Node* scene)
    {
        osg::ref_ptr<osg::Image> image = context().renderFrames(scene, 1, kImageSize, kImageSize);
        EXPECT_TRUE(image.valid()) << context().error();
        return image;
    }

    static void expectColour(osg::Image const& image, int column, int row, osg::Vec4 const& expected)
    {
        int const centre = kImageSize / 4;
        osg::Vec4 const actual = image.getColor(centre + column * kImageSize / 2, centre + row * kImageSize / 2);
        for (int c = 0; c < 4; ++c)
            EXPECT_NEAR(actual[c], expected[c], 0.02) << "quarter " << column << ", " << row << " channel " << c;
    }

    osg::ref_ptr<DepthReadBack> mDepth = new DepthReadBack;
};

TEST_F(DepthAttributesGLTest, MaskOffKeepsTheDepthBufferAndTheInheritedFunction)
{
    osg::Vec4 const blue(0, 0, 1, 1);
    osg::Vec4 const red(1, 0, 0, 1);
    osg::Vec4 const green(0, 1, 0, 1);
    osg::ref_ptr<osg::Group> root = makeRoot();
    // Writes its depth: shows that writing works at all.
    root->addChild(makeQuarter(0, 0, 0.0f, blue));
    // Mask off under an accepting function: drawn, depth untouched.
    osg::ref_ptr<osg::Group> lessEqual = new osg::Group;
    lessEqual->getOrCreateStateSet()->setAttribute(new DepthFunc(GL_LEQUAL));
    osg::ref_ptr<osg::Geode> unmasked = makeQuarter(1, 0, 0.0f, red);
    unmasked->getOrCreateStateSet()->setAttribute(new DepthMask(false));
    lessEqual->addChild(unmasked.get());
    root->addChild(lessEqual.get());
    // Mask off under GL_GREATER against the cleared 1.0: nothing may pass,
    // unless the mask brought its own function along.
    osg::ref_ptr<osg::Group> greater = new osg::Group;
    greater->getOrCreateStateSet()->setAttribute(new DepthFunc(GL_GREATER));
    osg::ref_ptr<osg::Geode> rejected = makeQuarter(0, 1, 0.0f, green);
    rejected->getOrCreateStateSet()->setAttribute(new DepthMask(false));
    greater->addChild(rejected.get());
    root->addChild(greater.get());

    osg::ref_ptr<osg::Image> image = render(root.get());
    ASSERT_TRUE(image.valid());

    expectColour(*image, 0, 0, blue);
    EXPECT_NEAR(mDepth->depthAt(0, 0), 0.5f, 1e-3);
    expectColour(*image, 1, 0, red);
    EXPECT_EQ(mDepth->depthAt(1, 0), 1.0f);
    expectColour(*image, 0, 1, kClear);
    EXPECT_EQ(mDepth->depthAt(0, 1), 1.0f);
}

TEST_F(DepthAttributesGLTest, RangeMapsDepthIntoItsInterval)
{
    osg::ref_ptr<osg::Group> root = makeRoot();
    root->addChild(makeQuarter(0, 0, -0.5f, osg::Vec4(1, 1, 1, 1)));
    osg::ref_ptr<osg::Geode> ranged = makeQuarter(1, 0, -0.5f, osg::Vec4(1, 1, 1, 1));
    ranged->getOrCreateStateSet()->setAttribute(new DepthRange(0.5, 1.0));
    root->addChild(ranged.get());
    // Drawn after the ranged quad: the range is back to the default.
    root->addChild(makeQuarter(1, 1, -0.5f, osg::Vec4(1, 1, 1, 1)));

    ASSERT_TRUE(render(root.get()).valid());

    EXPECT_NEAR(mDepth->depthAt(0, 0), 0.25f, 1e-3);
    EXPECT_NEAR(mDepth->depthAt(1, 0), 0.625f, 1e-3);
    EXPECT_NEAR(mDepth->depthAt(1, 1), 0.25f, 1e-3);
}

} // namespace
} // namespace Kelvor
