#include "support/GLTest.h"

#include "viewer/CKVMatrixCullVisitor.h"
#include "viewer/CKVOSGState.h"

#include "FlatSquare.h"

#include <gtest/gtest.h>

#include <osg/BufferIndexBinding>
#include <osg/BufferObject>
#include <osg/Geode>
#include <osg/Geometry>
#include <osg/MatrixTransform>
#include <osg/Program>
#include <osg/io_utils>
#include <osgViewer/Renderer>

#include <array>
#include <utility>
#include <vector>

namespace Kelvor {
namespace {

constexpr int kImageSize = 64;
constexpr unsigned int kCameraFloats = 112;
constexpr unsigned int kEntityFloats = 32;

// The shader reads every matrix from the blocks: a quad lands where
// kv_ViewProjectionMatrix * kv_ModelMatrix puts it, or nowhere.
char const* const kVertexShader = R"(#version 420 compatibility
layout(std140, binding = 0) uniform CameraInfo
{
    mat4 kv_ViewMatrix;
    mat4 kv_ViewMatrixInverse;
    mat4 kv_ViewProjectionMatrix;
    mat4 kv_ProjectionMatrix;
    mat4 kv_lastViewMatrix;
    mat4 kv_lastProjectionMatrix;
    mat4 kv_lastViewProjectionMatrix;
};
layout(std140, binding = 1) uniform EntityInfo
{
    mat4 kv_ModelMatrix;
    mat4 kv_lastModelMatrix;
};
void main()
{
    gl_Position = kv_ViewProjectionMatrix * kv_ModelMatrix * gl_Vertex;
    gl_FrontColor = gl_Color;
}
)";

char const* const kFragmentShader = R"(#version 420 compatibility
void main()
{
    gl_FragColor = gl_Color;
}
)";

// Looking down -z at the plane z = 0, which spans (-4, -4) to (4, 4) on screen.
osg::Matrixd const kView = osg::Matrixd::lookAt(osg::Vec3d(0, 0, 10), osg::Vec3d(0, 0, 0), osg::Vec3d(0, 1, 0));
osg::Matrixd const kProjection = osg::Matrixd::ortho(-4, 4, -4, 4, 1, 20);
osg::Vec4 const kClear(0, 0, 0, 1);

struct BufferWrite
{
    GLuint buffer;
    GLintptr offset;
    GLsizeiptr size;
};

// Records every block write before making it.
class RecordingState : public CKVOSGState
{
public:
    std::vector<BufferWrite> writes;

    std::vector<std::pair<GLintptr, GLsizeiptr>> rangesOf(osg::FloatArray const& array, unsigned int contextID) const
    {
        std::vector<std::pair<GLintptr, GLsizeiptr>> ranges;
        GLuint const id = array.getBufferObject()->getGLBufferObject(contextID)->getGLObjectID();
        for (BufferWrite const& write : writes)
            if (write.buffer == id)
                ranges.emplace_back(write.offset, write.size);
        return ranges;
    }

protected:
    void writeUniformBuffer(osg::GLBufferObject& buffer, GLintptr offset, GLsizeiptr size, void const* data) override
    {
        writes.push_back(BufferWrite{buffer.getGLObjectID(), offset, size});
        CKVOSGState::writeUniformBuffer(buffer, offset, size, data);
    }
};

using Ranges = std::vector<std::pair<GLintptr, GLsizeiptr>>;

osg::ref_ptr<osg::FloatArray> makeBlockArray(unsigned int floats)
{
    osg::ref_ptr<osg::FloatArray> array = new osg::FloatArray(floats);
    osg::Matrixf const identity;
    for (unsigned int first = 0; first + 16 <= floats; first += 16)
        std::copy(identity.ptr(), identity.ptr() + 16, array->begin() + first);
    array->setBufferObject(new osg::UniformBufferObject);
    return array;
}

osg::ref_ptr<osg::Geode> makeQuad(osg::Vec4 const& colour)
{
    return viewertest::makeFlatSquare(osg::Vec3(-0.5f, -0.5f, 0.0f), 1.0f, colour);
}

osg::Vec2i pixelOf(osg::Vec3 const& world)
{
    osg::Vec3 const window = world * kView * kProjection;
    return osg::Vec2i(static_cast<int>((window.x() + 1.0f) * 0.5f * kImageSize),
                      static_cast<int>((window.y() + 1.0f) * 0.5f * kImageSize));
}

void expectColour(osg::Image const& image, osg::Vec3 const& world, osg::Vec4 const& expected)
{
    osg::Vec2i const pixel = pixelOf(world);
    osg::Vec4 const actual = image.getColor(pixel.x(), pixel.y());
    for (int c = 0; c < 4; ++c)
        EXPECT_NEAR(actual[c], expected[c], 0.02) << "at world " << world << ", pixel " << pixel << " channel " << c;
}

void expectMatrix(float const* actual, osg::Matrixf const& expected, char const* what)
{
    for (int i = 0; i < 16; ++i)
        EXPECT_NEAR(actual[i], expected.ptr()[i], 1e-4) << what << " element " << i;
}

// Moves its transform along x by 0.25 per frame number.
class SlideCallback : public osg::NodeCallback
{
public:
    void operator()(osg::Node* node, osg::NodeVisitor* visitor) override
    {
        static_cast<osg::MatrixTransform*>(node)->setMatrix(offsetAt(visitor->getFrameStamp()->getFrameNumber()));
        traverse(node, visitor);
    }
    static osg::Matrixd offsetAt(unsigned int frameNumber) { return osg::Matrixd::translate(0.25 * frameNumber, 0, 0); }
};

// Gives the test viewer's camera the culling the backend's renderer sets up,
// looking through kView and kProjection.
bool cullWithMatrixVisitor(osg::Camera& camera)
{
    auto* renderer = dynamic_cast<osgViewer::Renderer*>(camera.getRenderer());
    if (renderer == nullptr)
        return false;
    renderer->getSceneView(0)->setCullVisitor(new CKVMatrixCullVisitor);
    renderer->getSceneView(1)->setCullVisitor(new CKVMatrixCullVisitor);
    camera.setViewMatrix(kView);
    camera.setProjectionMatrix(kProjection);
    camera.setComputeNearFarMode(osg::CullSettings::DO_NOT_COMPUTE_NEAR_FAR);
    camera.setClearColor(kClear);
    return true;
}

class OSGStateGLTest : public GLTest
{
protected:
    void SetUp() override
    {
        GLTest::SetUp();
        if (IsSkipped() || HasFatalFailure())
            return;
        unsigned int const stockContextID = context().state()->getContextID();
        mState = new RecordingState;
        ASSERT_TRUE(CKVOSGState::install(*context().graphicsContext(), *mState));
        ASSERT_EQ(context().state(), mState.get());
        EXPECT_EQ(mState->getContextID(), stockContextID);
        EXPECT_EQ(mState->getGraphicsContext(), context().graphicsContext());

        ASSERT_TRUE(cullWithMatrixVisitor(*context().camera()));

        mCameraArray = makeBlockArray(kCameraFloats);
        mEntityArray = makeBlockArray(kEntityFloats);
        mState->setCameraArray(mCameraArray.get());
        mState->setEntityArray(mEntityArray.get());
    }

    // The scene root: both blocks bound and the program on.
    osg::ref_ptr<osg::Group> makeRoot()
    {
        osg::ref_ptr<osg::Group> root = new osg::Group;
        osg::StateSet* stateSet = root->getOrCreateStateSet();
        stateSet->setAttribute(new osg::UniformBufferBinding(0, mCameraArray.get(), 0, kCameraFloats * 4));
        stateSet->setAttribute(new osg::UniformBufferBinding(1, mEntityArray.get(), 0, kEntityFloats * 4));
        osg::ref_ptr<osg::Program> program = new osg::Program;
        program->addShader(new osg::Shader(osg::Shader::VERTEX, kVertexShader));
        program->addShader(new osg::Shader(osg::Shader::FRAGMENT, kFragmentShader));
        stateSet->setAttributeAndModes(program.get());
        return root;
    }

    osg::ref_ptr<osg::Image> render(osg::Node* scene, int frames)
    {
        osg::ref_ptr<osg::Image> image = context().renderFrames(scene, frames, kImageSize, kImageSize);
        EXPECT_TRUE(image.valid()) << context().error();
        return image;
    }

    // The content of `array`'s GL buffer.
    std::vector<float> readBack(osg::FloatArray const& array)
    {
        std::vector<float> values(array.getNumElements());
        EXPECT_TRUE(context().runWithContext([&](osg::State& state) {
            osg::GLBufferObject* buffer = array.getBufferObject()->getGLBufferObject(state.getContextID());
            ASSERT_NE(buffer, nullptr);
            osg::GLExtensions* gl = state.get<osg::GLExtensions>();
            gl->glBindBuffer(GL_UNIFORM_BUFFER, buffer->getGLObjectID());
            gl->glGetBufferSubData(GL_UNIFORM_BUFFER, buffer->getOffset(array.getBufferIndex()),
                                   values.size() * sizeof(float), values.data());
            gl->glBindBuffer(GL_UNIFORM_BUFFER, 0);
        }));
        return values;
    }

    // The camera block holds kView and kProjection.
    void expectCameraBlock()
    {
        std::vector<float> const camera = readBack(*mCameraArray);
        expectMatrix(&camera[0], osg::Matrixf(kView), "kv_ViewMatrix");
        expectMatrix(&camera[16], osg::Matrixf::inverse(osg::Matrixf(kView)), "kv_ViewMatrixInverse");
        expectMatrix(&camera[32], osg::Matrixf(kView * kProjection), "kv_ViewProjectionMatrix");
        expectMatrix(&camera[48], osg::Matrixf(kProjection), "kv_ProjectionMatrix");
    }

    // Makes the blocks' GL buffers, as the first frame would.
    void compileBlocks(osg::State& state)
    {
        for (osg::FloatArray* array : {mCameraArray.get(), mEntityArray.get()})
            array->getBufferObject()->getOrCreateGLBufferObject(state.getContextID())->compileBuffer();
    }

    Ranges cameraWrites() const { return mState->rangesOf(*mCameraArray, mState->getContextID()); }
    Ranges entityWrites() const { return mState->rangesOf(*mEntityArray, mState->getContextID()); }

    osg::ref_ptr<RecordingState> mState;
    osg::ref_ptr<osg::FloatArray> mCameraArray;
    osg::ref_ptr<osg::FloatArray> mEntityArray;
};

TEST_F(OSGStateGLTest, BlocksHoldTheCameraAndTheModelOfTheDraw)
{
    osg::Matrixd const model = osg::Matrixd::rotate(0.3, osg::Vec3d(0, 0, 1)) * osg::Matrixd::translate(1.5, -1.0, 0);
    osg::ref_ptr<osg::Group> root = makeRoot();
    root->addChild(new osg::MatrixTransform(model));
    root->getChild(0)->asGroup()->addChild(makeQuad(osg::Vec4(1, 0, 0, 1)));

    osg::ref_ptr<osg::Image> image = render(root.get(), 3);
    ASSERT_TRUE(image.valid());

    expectColour(*image, osg::Vec3(1.5f, -1.0f, 0), osg::Vec4(1, 0, 0, 1));
    expectColour(*image, osg::Vec3(-1.5f, 1.0f, 0), kClear);
    expectCameraBlock();
    std::vector<float> const entity = readBack(*mEntityArray);
    expectMatrix(&entity[0], osg::Matrixf(model), "kv_ModelMatrix");
    expectMatrix(&entity[16], osg::Matrixf(model), "kv_lastModelMatrix of a still node");
}

TEST_F(OSGStateGLTest, EachDrawGetsItsOwnModelMatrix)
{
    osg::ref_ptr<osg::Group> root = makeRoot();
    osg::Vec3 const places[] = {{-2, -2, 0}, {2, -2, 0}, {0, 2, 0}};
    osg::Vec4 const colours[] = {{1, 0, 0, 1}, {0, 1, 0, 1}, {0, 0, 1, 1}};
    for (int i = 0; i < 3; ++i)
    {
        osg::ref_ptr<osg::MatrixTransform> transform = new osg::MatrixTransform(osg::Matrixd::translate(places[i]));
        transform->addChild(makeQuad(colours[i]));
        root->addChild(transform.get());
    }

    osg::ref_ptr<osg::Image> image = render(root.get(), 2);
    ASSERT_TRUE(image.valid());

    for (int i = 0; i < 3; ++i)
        expectColour(*image, places[i], colours[i]);
    expectColour(*image, osg::Vec3(0, 0, 0), kClear);
}

TEST_F(OSGStateGLTest, LastModelIsThePreviousFramesEvenWithTwoPasses)
{
    osg::ref_ptr<osg::MatrixTransform> moving = new osg::MatrixTransform;
    moving->setUpdateCallback(new SlideCallback);
    moving->addChild(makeQuad(osg::Vec4(1, 1, 0, 1)));
    // A pass before the main one draws the same node in each frame.
    osg::ref_ptr<osg::Camera> prePass = new osg::Camera;
    prePass->setRenderOrder(osg::Camera::PRE_RENDER);
    prePass->setClearMask(0);
    prePass->addChild(moving.get());
    osg::ref_ptr<osg::Group> root = makeRoot();
    root->addChild(prePass.get());
    root->addChild(moving.get());

    ASSERT_TRUE(render(root.get(), 4).valid());

    unsigned int const frame = context().viewer()->getFrameStamp()->getFrameNumber();
    std::vector<float> const entity = readBack(*mEntityArray);
    expectMatrix(&entity[0], osg::Matrixf(SlideCallback::offsetAt(frame)), "kv_ModelMatrix");
    expectMatrix(&entity[16], osg::Matrixf(SlideCallback::offsetAt(frame - 1)), "kv_lastModelMatrix");
}

TEST_F(OSGStateGLTest, DrawsSharingTransformAndViewWriteNothingMore)
{
    osg::ref_ptr<osg::Geode> quads = makeQuad(osg::Vec4(1, 0, 0, 1));
    quads->addDrawable(static_cast<osg::Drawable*>(makeQuad(osg::Vec4(0, 1, 0, 1))->getDrawable(0)));
    osg::ref_ptr<osg::Group> root = makeRoot();
    root->addChild(new osg::MatrixTransform(osg::Matrixd::translate(1, 1, 0)));
    root->getChild(0)->asGroup()->addChild(quads.get());
    ASSERT_TRUE(render(root.get(), 2).valid());

    mState->writes.clear();
    ASSERT_TRUE(render(root.get(), 1).valid());

    // Each frame brings new projection, view and model matrix objects; the
    // second draw shares all three with the first.
    EXPECT_EQ(cameraWrites(), (Ranges{{0, 256}}));
    EXPECT_EQ(entityWrites(), (Ranges{{0, 64}}));
}

TEST_F(OSGStateGLTest, WritesOnlyThePartsThatChanged)
{
    osg::ref_ptr<osg::RefMatrix> projection = new osg::RefMatrix(kProjection);
    osg::ref_ptr<osg::RefMatrix> otherProjection = new osg::RefMatrix(osg::Matrixd::perspective(40, 1, 1, 30));
    osg::ref_ptr<osg::RefMatrix> view = new osg::RefMatrix(kView);
    osg::ref_ptr<osg::RefMatrix> otherView = new osg::RefMatrix(osg::Matrixd::translate(0, 0, -3));
    osg::ref_ptr<osg::RefMatrix> model = new osg::RefMatrix(osg::Matrixd::translate(1, 2, 3));
    osg::ref_ptr<osg::RefMatrix> otherModel = new osg::RefMatrix(osg::Matrixd::scale(2, 2, 2));
    osg::ref_ptr<osg::RefMatrix> modelView = new osg::RefMatrix(*model * *view);
    osg::Matrixf const last = osg::Matrixf::translate(0, 1, 0);
    osg::Matrixf const otherLast = osg::Matrixf::translate(0, 2, 0);

    struct Step
    {
        char const* what;
        osg::RefMatrix* projection;
        osg::RefMatrix* view;
        osg::RefMatrix* model;
        osg::Matrixf lastModel;
        Ranges camera;
        Ranges entity;
    };
    std::vector<Step> const steps = {
        {"first draw", projection.get(), view.get(), model.get(), last, {{0, 256}}, {{0, 128}}},
        {"same again", projection.get(), view.get(), model.get(), last, {}, {}},
        {"last model only", projection.get(), view.get(), model.get(), otherLast, {}, {{64, 64}}},
        {"model only", projection.get(), view.get(), otherModel.get(), otherLast, {}, {{0, 64}}},
        {"both models", projection.get(), view.get(), model.get(), last, {}, {{0, 128}}},
        {"view only", projection.get(), otherView.get(), model.get(), last, {{0, 192}}, {}},
        {"projection only", otherProjection.get(), otherView.get(), model.get(), last, {{128, 128}}, {}},
        {"projection and view", projection.get(), view.get(), model.get(), last, {{0, 256}}, {}},
        {"same again", projection.get(), view.get(), model.get(), last, {}, {}},
    };

    ASSERT_TRUE(context().runWithContext([&](osg::State& state) {
        compileBlocks(state);
        for (Step const& step : steps)
        {
            mState->writes.clear();
            mState->applyProjectionMatrix(step.projection);
            mState->applyMatrices(modelView.get(), step.model, step.view, step.lastModel);
            EXPECT_EQ(cameraWrites(), step.camera) << step.what;
            EXPECT_EQ(entityWrites(), step.entity) << step.what;
        }
    }));

    expectCameraBlock();
    std::vector<float> const entity = readBack(*mEntityArray);
    expectMatrix(&entity[0], osg::Matrixf(*model), "kv_ModelMatrix");
    expectMatrix(&entity[16], last, "kv_lastModelMatrix");
}

TEST_F(OSGStateGLTest, NullProjectionIsIdentity)
{
    osg::ref_ptr<osg::RefMatrix> view = new osg::RefMatrix(kView);
    ASSERT_TRUE(context().runWithContext([&](osg::State& state) {
        compileBlocks(state);
        mState->applyProjectionMatrix(new osg::RefMatrix(kProjection));
        mState->applyMatrices(nullptr, nullptr, view.get(), osg::Matrixf());
        mState->writes.clear();
        mState->applyProjectionMatrix(nullptr);
        mState->applyMatrices(nullptr, nullptr, view.get(), osg::Matrixf());
        EXPECT_EQ(cameraWrites(), (Ranges{{128, 128}}));
    }));

    std::vector<float> const camera = readBack(*mCameraArray);
    expectMatrix(&camera[32], osg::Matrixf(kView), "kv_ViewProjectionMatrix");
    expectMatrix(&camera[48], osg::Matrixf(), "kv_ProjectionMatrix");
}

TEST_F(OSGStateGLTest, PlainMatricesAreComparedByValue)
{
    osg::Matrixd const model = osg::Matrixd::translate(3, 0, 0);
    ASSERT_TRUE(context().runWithContext([&](osg::State& state) {
        compileBlocks(state);
        mState->applyMatrices(nullptr, model, kView, osg::Matrixf());
        mState->writes.clear();
        mState->applyMatrices(nullptr, osg::Matrixd(model), osg::Matrixd(kView), osg::Matrixf());
        EXPECT_TRUE(mState->writes.empty());
        mState->applyMatrices(nullptr, osg::Matrixd::translate(4, 0, 0), kView, osg::Matrixf());
        EXPECT_EQ(entityWrites(), (Ranges{{0, 64}}));
        EXPECT_TRUE(cameraWrites().empty());
    }));

    std::vector<float> const entity = readBack(*mEntityArray);
    expectMatrix(&entity[0], osg::Matrixf::translate(4, 0, 0), "kv_ModelMatrix");
}

TEST_F(OSGStateGLTest, ChangedArraysAreUploadedBeforeThePartialWrites)
{
    // The render context may refresh a block's array (the root fills the
    // last-frame matrices); its upload must not land over the matrices.
    osg::ref_ptr<osg::RefMatrix> view = new osg::RefMatrix(kView);
    osg::ref_ptr<osg::RefMatrix> model = new osg::RefMatrix(osg::Matrixd::translate(1, 0, 0));
    ASSERT_TRUE(context().runWithContext([&](osg::State& state) {
        compileBlocks(state);
        mState->applyMatrices(nullptr, model.get(), view.get(), osg::Matrixf());
        std::fill(mCameraArray->begin(), mCameraArray->end(), 7.0f);
        mCameraArray->dirty();
        mState->writes.clear();
        mState->applyMatrices(nullptr, model.get(), view.get(), osg::Matrixf());
        EXPECT_EQ(cameraWrites(), (Ranges{{0, 256}}));
        EXPECT_TRUE(entityWrites().empty());
    }));

    std::vector<float> const camera = readBack(*mCameraArray);
    expectMatrix(&camera[0], osg::Matrixf(kView), "kv_ViewMatrix");
    EXPECT_EQ(camera[64], 7.0f) << "kv_lastViewMatrix comes from the array";
}

TEST_F(OSGStateGLTest, BlocksWithoutBuffersAreSkippedAndWrittenOnceTheyExist)
{
    osg::ref_ptr<osg::RefMatrix> view = new osg::RefMatrix(kView);
    osg::ref_ptr<osg::RefMatrix> model = new osg::RefMatrix(osg::Matrixd::translate(1, 0, 0));
    ASSERT_TRUE(context().runWithContext([&](osg::State& state) {
        mState->applyMatrices(nullptr, model.get(), view.get(), osg::Matrixf());
        EXPECT_TRUE(mState->writes.empty());
        compileBlocks(state);
        mState->applyMatrices(nullptr, model.get(), view.get(), osg::Matrixf());
        EXPECT_EQ(cameraWrites(), (Ranges{{0, 256}}));
        EXPECT_EQ(entityWrites(), (Ranges{{0, 128}}));
    }));

    std::vector<float> const entity = readBack(*mEntityArray);
    expectMatrix(&entity[0], osg::Matrixf(*model), "kv_ModelMatrix");
}

using MatrixLeafStockStateGLTest = GLTest;

// The leaves fall back to the stock path in a context without the backend's
// state: fixed-function matrices, blocks untouched.
TEST_F(MatrixLeafStockStateGLTest, LeavesDrawWithTheStockStateToo)
{
    ASSERT_TRUE(cullWithMatrixVisitor(*context().camera()));
    osg::ref_ptr<osg::MatrixTransform> transform = new osg::MatrixTransform(osg::Matrixd::translate(-2, 1, 0));
    transform->addChild(makeQuad(osg::Vec4(1, 0, 1, 1)));
    transform->getOrCreateStateSet()->setMode(GL_LIGHTING, osg::StateAttribute::OFF);

    osg::ref_ptr<osg::Image> image = context().renderFrames(transform.get(), 2, kImageSize, kImageSize);
    ASSERT_TRUE(image.valid()) << context().error();

    expectColour(*image, osg::Vec3(-2, 1, 0), osg::Vec4(1, 0, 1, 1));
    expectColour(*image, osg::Vec3(2, -1, 0), kClear);
}

} // namespace
} // namespace Kelvor
