#include "BufferGeometryTestSupport.h"

#include "programs/CKVRenderStateManager.h"
#include "scene/CKVOSGGeometry.h"
#include "scene/CKVOSGMultiDrawElementsIndirectUInt.h"
#include "support/GLTest.h"
#include "viewer/CKVOSGState.h"

#include <gtest/gtest.h>

#include <osg/BufferObject>
#include <osg/Camera>
#include <osg/GLExtensions>
#include <osg/Group>
#include <osg/Notify>
#include <osg/Program>

#include <string>
#include <vector>

namespace Kelvor {
namespace {

// One world unit is one pixel: the camera maps [0, kSize] on both axes onto
// a kSize x kSize image.
constexpr int kSize = 100;
constexpr unsigned int kGridInstances = kSize * kSize;

char const* const kVertexShader = R"(#version 420 compatibility
layout(location = 0) in vec3 kvPosition;
layout(location = 3) in mat4 kv_InstanceMatrix;
uniform bool uInstanced;
void main()
{
    vec4 position = vec4(kvPosition, 1.0);
    if (uInstanced)
        position = kv_InstanceMatrix * position;
    gl_Position = gl_ModelViewProjectionMatrix * position;
}
)";

char const* const kFragmentShader = R"(#version 420 compatibility
layout(location = 0) out vec4 fragColour;
void main()
{
    fragColour = vec4(1.0, 0.8, 0.2, 1.0);
}
)";

// Stands in for the real culling program: same bindings and uniforms, but
// it keeps the instances of the left half of the picture, and none at all
// unless the box uniforms describe the shape (centre 0.5, extent 0.4).
char const* const kCullingShader = R"(#version 430 core
layout(local_size_x = 512) in;
layout(binding = 0) uniform atomic_uint instanceCount;
layout(std430, binding = 0) readonly buffer InstanceInput { vec4 inputRows[]; };
layout(std430, binding = 1) writeonly buffer InstanceOutput { vec4 outputRows[]; };
layout(location = 0) uniform uint InstacneNum;
layout(location = 1) uniform vec3 Center;
layout(location = 2) uniform vec3 Extent;
void main()
{
    uint id = gl_GlobalInvocationID.x;
    if (id >= InstacneNum)
        return;
    bool boxGiven = all(lessThan(abs(Center.xy - vec2(0.5)), vec2(0.01)))
        && all(lessThan(abs(Extent.xy - vec2(0.4)), vec2(0.01)));
    if (!boxGiven || inputRows[id + 3u * InstacneNum].x >= 50.0)
        return;
    uint slot = atomicCounterIncrement(instanceCount);
    for (uint r = 0u; r < 4u; ++r)
        outputRows[slot + r * InstacneNum] = inputRows[id + r * InstacneNum];
}
)";

// Counts the indirect draws of a context by wrapping its entry points.
struct DrawCalls
{
    using MultiDraw = void(GL_APIENTRY*)(GLenum, GLenum, void const*, GLsizei, GLsizei);
    using SingleDraw = void(GL_APIENTRY*)(GLenum, GLenum, void const*);

    static void GL_APIENTRY multiDraw(GLenum mode, GLenum type, void const* indirect, GLsizei count, GLsizei stride)
    {
        ++multiDraws;
        lastCommandCount = count;
        realMultiDraw(mode, type, indirect, count, stride);
    }
    static void GL_APIENTRY singleDraw(GLenum mode, GLenum type, void const* indirect)
    {
        ++singleDraws;
        realSingleDraw(mode, type, indirect);
    }
    static void reset()
    {
        multiDraws = 0;
        singleDraws = 0;
        lastCommandCount = -1;
    }

    static inline int multiDraws = 0;
    static inline int singleDraws = 0;
    static inline GLsizei lastCommandCount = -1;
    static inline MultiDraw realMultiDraw = nullptr;
    static inline SingleDraw realSingleDraw = nullptr;
};

class GLErrorCollector : public osg::NotifyHandler
{
public:
    void notify(osg::NotifySeverity severity, char const* message) override
    {
        if (severity <= osg::WARN)
            mWarnings += message;
    }
    std::string const& warnings() const { return mWarnings; }

private:
    std::string mWarnings;
};

class MemoryBarrierCallback : public osg::Camera::DrawCallback
{
public:
    void operator()(osg::RenderInfo& renderInfo) const override
    {
        renderInfo.getState()->get<osg::GLExtensions>()->glMemoryBarrier(
            GL_VERTEX_ATTRIB_ARRAY_BARRIER_BIT | GL_COMMAND_BARRIER_BIT | GL_BUFFER_UPDATE_BARRIER_BIT);
    }
};

int countDrawnPixels(osg::Image const& image, int firstColumn = 0, int endColumn = kSize)
{
    int drawn = 0;
    for (int t = 0; t < image.t(); ++t)
    {
        for (int s = firstColumn; s < endColumn; ++s)
            drawn += image.getColor(s, t).r() > 0.5f ? 1 : 0;
    }
    return drawn;
}

bool drawnAt(osg::Image const& image, int s, int t)
{
    return image.getColor(s, t).r() > 0.5f;
}

class BufferGeometryGLTest : public GLTest
{
protected:
    void SetUp() override
    {
        GLTest::SetUp();
        if (IsSkipped() || HasFatalFailure())
            return;
        mState = CKVOSGState::install(*context().graphicsContext());
        ASSERT_NE(mState, nullptr);
        mState->setCheckForGLErrors(osg::State::ONCE_PER_ATTRIBUTE);

        osg::Camera* camera = context().camera();
        camera->setClearColor(osg::Vec4(0.0f, 0.0f, 0.0f, 1.0f));
        camera->setViewMatrix(osg::Matrixd::identity());
        camera->setProjectionMatrixAsOrtho2D(0.0, kSize, 0.0, kSize);
        camera->setComputeNearFarMode(osg::CullSettings::DO_NOT_COMPUTE_NEAR_FAR);

        ASSERT_TRUE(context().runWithContext([this](osg::State& state) {
            mExtensions = state.get<osg::GLExtensions>();
            DrawCalls::realMultiDraw = mExtensions->glMultiDrawElementsIndirect;
            DrawCalls::realSingleDraw = mExtensions->glDrawElementsIndirect;
            mExtensions->glMultiDrawElementsIndirect = &DrawCalls::multiDraw;
            mExtensions->glDrawElementsIndirect = &DrawCalls::singleDraw;
        }));
        ASSERT_NE(DrawCalls::realMultiDraw, nullptr) << "the driver lacks multi-draw indirect";

        mPreviousNotify = osg::getNotifyHandler();
        mErrors = new GLErrorCollector;
        osg::setNotifyHandler(mErrors.get());
    }

    void TearDown() override
    {
        if (mPreviousNotify.valid())
            osg::setNotifyHandler(mPreviousNotify.get());
        if (mExtensions)
        {
            mExtensions->glMultiDrawElementsIndirect = DrawCalls::realMultiDraw;
            mExtensions->glDrawElementsIndirect = DrawCalls::realSingleDraw;
        }
        CKVRenderStateManager::instance().setOcclusionCulling(true);
        GLTest::TearDown();
    }

    // The geometry under a group, drawn with the test's program.
    osg::ref_ptr<osg::Group> makeScene(CKVOSGGeometry* geometry, bool instanced)
    {
        osg::ref_ptr<osg::Program> program = new osg::Program;
        program->addShader(new osg::Shader(osg::Shader::VERTEX, kVertexShader));
        program->addShader(new osg::Shader(osg::Shader::FRAGMENT, kFragmentShader));
        osg::StateSet* stateSet = geometry->getOrCreateStateSet();
        stateSet->setAttributeAndModes(program.get());
        stateSet->addUniform(new osg::Uniform("uInstanced", instanced));

        osg::ref_ptr<osg::Group> root = new osg::Group;
        root->addChild(geometry);
        return root;
    }

    // The pass that culls: it runs before the scene, with the culling
    // program forced on everything below it.
    osg::ref_ptr<osg::Camera> makeOcclusionPass(osg::Node* subject)
    {
        osg::ref_ptr<osg::Camera> camera = new osg::Camera;
        camera->setName("OcclusionCamera");
        camera->setRenderOrder(osg::Camera::PRE_RENDER, 6);
        camera->setReferenceFrame(osg::Transform::ABSOLUTE_RF);
        camera->setClearMask(0);
        camera->setViewport(0, 0, kSize, kSize);
        camera->setViewMatrix(osg::Matrixd::identity());
        camera->setProjectionMatrixAsOrtho2D(0.0, kSize, 0.0, kSize);
        camera->setComputeNearFarMode(osg::CullSettings::DO_NOT_COMPUTE_NEAR_FAR);
        camera->setPostDrawCallback(new MemoryBarrierCallback);
        osg::ref_ptr<osg::Program> culling = new osg::Program;
        culling->addShader(new osg::Shader(osg::Shader::COMPUTE, kCullingShader));
        camera->getOrCreateStateSet()->setAttributeAndModes(
            culling.get(), osg::StateAttribute::ON | osg::StateAttribute::OVERRIDE);
        camera->addChild(subject);
        return camera;
    }

    // A 0.8-pixel square centred in its pixel for every pixel of the image,
    // one instance each, bottom row first.
    kv_shared_ptr<CKVBufferGeometryImp> makeGrid()
    {
        kv_shared_ptr<CKVBufferGeometryImp> host = makeHostGeometry();
        mBuffers.push_back(makeSquarePart(0.1f, 0.1f, 0.9f, 0.9f));
        for (unsigned int i = 0; i < kGridInstances; ++i)
            mBuffers.push_back(makeInstance(CKVMatrix3D::translation(CKVVector3D(i % kSize, i / kSize, 0.0))));
        host->updateLogicBuffers(std::vector<bool>(mBuffers.size(), true), rawPointers(mBuffers));
        host->updatePhysicalBuffer();
        host->getOSGGeometry()->rebuild();
        return host;
    }

    // Buffers set straight through the host's API, without logic buffers.
    kv_shared_ptr<CKVBufferGeometryImp> makeFilled(std::vector<float> const& vertices,
                                                   std::vector<unsigned int> const& indices,
                                                   std::vector<CKVBufferDataSegment> const& segments)
    {
        kv_shared_ptr<CKVBufferGeometryImp> host = makeHostGeometry();
        CKVVertexBufferAttribute* positions = CKVRenderCallback::createVertexBufferAttribute(CKVVertexBufferAttribute::kVertex);
        positions->setData(vertices.data(), static_cast<unsigned int>(vertices.size()));
        host->setVertexBufferAttribute(positions);
        CKVVertexIndex* index = CKVRenderCallback::createVertexIndex(CKVVertexIndex::kTriangles);
        index->setData(indices.data(), static_cast<unsigned int>(indices.size()));
        index->setSegments(segments);
        index->updateDrawRange();
        host->setVertexIndex(index);
        host->updatePhysicalBuffer();
        host->getOSGGeometry()->rebuild();
        return host;
    }

    osg::ref_ptr<osg::Image> renderFrame(osg::Node* scene)
    {
        DrawCalls::reset();
        osg::ref_ptr<osg::Image> image = context().renderFrames(scene, 1, kSize, kSize);
        EXPECT_TRUE(image.valid()) << context().error();
        return image;
    }

    // The indirect commands as the GPU holds them now.
    std::vector<osg::DrawElementsIndirectCommand> readCommands(CKVOSGGeometry& geometry)
    {
        std::vector<osg::DrawElementsIndirectCommand> commands;
        osg::DrawElementsIndirect* primitiveSet =
            static_cast<osg::DrawElementsIndirect*>(geometry.getPrimitiveSet(0));
        osg::IndirectCommandDrawElements* array = primitiveSet->getIndirectCommandArray();
        context().runWithContext([&](osg::State& state) {
            osg::GLBufferObject* buffer = array->getBufferObject()->getGLBufferObject(state.getContextID());
            if (!buffer)
                return;
            commands.resize(array->getNumElements());
            osg::GLExtensions* gl = state.get<osg::GLExtensions>();
            // Read through a binding that the draw does not use, so that
            // the state's idea of the bound command buffer stays true.
            gl->glBindBuffer(GL_COPY_READ_BUFFER, buffer->getGLObjectID());
            gl->glGetBufferSubData(GL_COPY_READ_BUFFER, buffer->getOffset(array->getBufferIndex()),
                                   commands.size() * sizeof(osg::DrawElementsIndirectCommand), commands.data());
            gl->glBindBuffer(GL_COPY_READ_BUFFER, 0);
        });
        return commands;
    }

    std::string const& warnings() const { return mErrors->warnings(); }

    BufferFactoriesScope mFactories;
    std::vector<kv_shared_ptr<CKVLogicBufferGeometry>> mBuffers;

private:
    CKVOSGState* mState = nullptr;
    osg::GLExtensions* mExtensions = nullptr;
    osg::ref_ptr<osg::NotifyHandler> mPreviousNotify;
    osg::ref_ptr<GLErrorCollector> mErrors;
};

TEST_F(BufferGeometryGLTest, SegmentsDrawTheirSubRangesInOneCall)
{
    // Three squares in a row; the segments skip the middle one.
    std::vector<float> vertices;
    std::vector<unsigned int> indices;
    for (unsigned int square = 0; square < 3; ++square)
    {
        float const x0 = 10.0f + 30.0f * square;
        float const x1 = x0 + 20.0f;
        vertices.insert(vertices.end(), {x0, 40, 0, x1, 40, 0, x1, 60, 0, x0, 60, 0});
        for (unsigned int corner : {0u, 1u, 2u, 0u, 2u, 3u})
            indices.push_back(4 * square + corner);
    }
    kv_shared_ptr<CKVBufferGeometryImp> host =
        makeFilled(vertices, indices, {CKVBufferDataSegment(0, 6), CKVBufferDataSegment(12, 6)});
    osg::ref_ptr<osg::Group> scene = makeScene(host->getOSGGeometry(), false);

    osg::ref_ptr<osg::Image> image = renderFrame(scene.get());
    ASSERT_TRUE(image.valid());

    EXPECT_EQ(DrawCalls::multiDraws, 1);
    EXPECT_EQ(DrawCalls::lastCommandCount, 2);
    EXPECT_EQ(DrawCalls::singleDraws, 0);
    EXPECT_TRUE(drawnAt(*image, 20, 50));
    EXPECT_FALSE(drawnAt(*image, 50, 50));
    EXPECT_TRUE(drawnAt(*image, 80, 50));
    EXPECT_EQ(countDrawnPixels(*image), 2 * 20 * 20);

    std::vector<osg::DrawElementsIndirectCommand> const commands = readCommands(*host->getOSGGeometry());
    ASSERT_EQ(commands.size(), 2u);
    EXPECT_EQ(commands[0].count, 6u);
    EXPECT_EQ(commands[0].firstIndex, 0u);
    EXPECT_EQ(commands[1].firstIndex, 12u);
    EXPECT_EQ(commands[0].instanceCount, 1u);
    EXPECT_EQ(commands[1].instanceCount, 1u);
    EXPECT_EQ(warnings(), "");
}

TEST_F(BufferGeometryGLTest, TenThousandInstancesAreOneMultiDraw)
{
    kv_shared_ptr<CKVBufferGeometryImp> host = makeGrid();
    ASSERT_EQ(host->getVertexIndex()->getNumInstance(), kGridInstances);
    osg::ref_ptr<osg::Group> scene = makeScene(host->getOSGGeometry(), true);

    osg::ref_ptr<osg::Image> image = renderFrame(scene.get());
    ASSERT_TRUE(image.valid());

    EXPECT_EQ(DrawCalls::multiDraws, 1);
    EXPECT_EQ(DrawCalls::lastCommandCount, 1);
    EXPECT_EQ(DrawCalls::singleDraws, 0);
    EXPECT_EQ(countDrawnPixels(*image), int(kGridInstances));
    std::vector<osg::DrawElementsIndirectCommand> const commands = readCommands(*host->getOSGGeometry());
    ASSERT_EQ(commands.size(), 1u);
    EXPECT_EQ(commands[0].instanceCount, kGridInstances);
    EXPECT_EQ(commands[0].count, 6u);

    // The next frame binds only the vertex array object and draws the same.
    image = renderFrame(scene.get());
    ASSERT_TRUE(image.valid());
    EXPECT_EQ(DrawCalls::multiDraws, 1);
    EXPECT_EQ(countDrawnPixels(*image), int(kGridInstances));
    EXPECT_EQ(warnings(), "");
}

TEST_F(BufferGeometryGLTest, HostUpdatesChangeThePicture)
{
    kv_shared_ptr<CKVBufferGeometryImp> host = makeHostGeometry();
    kv_shared_ptr<CKVLogicBufferGeometry> left = makeSquarePart(10, 10, 40, 90);
    kv_shared_ptr<CKVLogicBufferGeometry> right = makeSquarePart(60, 10, 90, 90);
    CKVOSGGeometry* geometry = host->getOSGGeometry();
    // The way an update command reaches the geometry: logic buffers, packing,
    // then the rebuild when packing changed something.
    auto update = [&](std::vector<bool> const& add, std::vector<CKVLogicBufferGeometry*> const& buffers) {
        ASSERT_TRUE(host->updateLogicBuffers(add, buffers));
        ASSERT_TRUE(host->updatePhysicalBuffer());
        geometry->rebuild();
    };
    update({true}, {left.get()});
    osg::ref_ptr<osg::Group> scene = makeScene(geometry, false);

    osg::ref_ptr<osg::Image> image = renderFrame(scene.get());
    ASSERT_TRUE(image.valid());
    EXPECT_TRUE(drawnAt(*image, 25, 50));
    EXPECT_FALSE(drawnAt(*image, 75, 50));

    update({false, true}, {left.get(), right.get()});
    image = renderFrame(scene.get());
    ASSERT_TRUE(image.valid());
    EXPECT_FALSE(drawnAt(*image, 25, 50));
    EXPECT_TRUE(drawnAt(*image, 75, 50));

    // A host write into a bound array, with no rebuild, still reaches the
    // GPU: the right square moves down by 50.
    std::vector<float> moved(static_cast<float const*>(host->getVertexBufferAttribute(CKVVertexBufferAttribute::kVertex)->getData()),
                             static_cast<float const*>(host->getVertexBufferAttribute(CKVVertexBufferAttribute::kVertex)->getData()) + 12);
    for (unsigned int i = 1; i < moved.size(); i += 3)
        moved[i] -= 50.0f;
    ASSERT_TRUE(host->getVertexBufferAttribute(CKVVertexBufferAttribute::kVertex)->updateData(0, moved.data(), 12));
    image = renderFrame(scene.get());
    ASSERT_TRUE(image.valid());
    EXPECT_TRUE(drawnAt(*image, 75, 20));
    EXPECT_FALSE(drawnAt(*image, 75, 60));
    EXPECT_EQ(warnings(), "");
}

TEST_F(BufferGeometryGLTest, NothingIsDrawnWithoutSegmentsOrAfterTheHostIsGone)
{
    kv_shared_ptr<CKVBufferGeometryImp> host = makeFilled({10, 10, 0, 90, 10, 0, 50, 90, 0}, {0, 1, 2}, {});
    CKVVertexIndex* index = host->getVertexIndex();
    osg::ref_ptr<CKVOSGGeometry> geometry = host->getOSGGeometry();
    osg::ref_ptr<osg::Group> scene = makeScene(geometry.get(), false);

    osg::ref_ptr<osg::Image> image = renderFrame(scene.get());
    ASSERT_TRUE(image.valid());
    EXPECT_EQ(DrawCalls::multiDraws + DrawCalls::singleDraws, 0);
    EXPECT_EQ(countDrawnPixels(*image), 0);

    // A segment added later draws without a rebuild, through the vertex
    // array object made while there was nothing to draw.
    index->addSegment(CKVBufferDataSegment(0, 3));
    index->updateDrawRange();
    image = renderFrame(scene.get());
    ASSERT_TRUE(image.valid());
    EXPECT_EQ(DrawCalls::multiDraws, 1);
    EXPECT_TRUE(drawnAt(*image, 50, 40));

    // The scene still holds the geometry when the host object goes.
    host = nullptr;
    image = renderFrame(scene.get());
    ASSERT_TRUE(image.valid());
    EXPECT_EQ(DrawCalls::multiDraws, 0);
    EXPECT_EQ(countDrawnPixels(*image), 0);
    EXPECT_EQ(warnings(), "");
}

TEST_F(BufferGeometryGLTest, CullingPassCompactsInstancesAndSwitchingOffRestoresThem)
{
    kv_shared_ptr<CKVBufferGeometryImp> host = makeGrid();
    CKVOSGGeometry* geometry = host->getOSGGeometry();
    ASSERT_NE(geometry->getInstanceMatrixRowCopy(0), nullptr);
    osg::ref_ptr<osg::Group> scene = makeScene(geometry, true);
    osg::ref_ptr<osg::Camera> occlusion = makeOcclusionPass(geometry);
    scene->addChild(occlusion.get());

    osg::ref_ptr<osg::Image> image = renderFrame(scene.get());
    ASSERT_TRUE(image.valid());
    // The culling pass draws nothing; the scene pass draws the survivors.
    EXPECT_EQ(DrawCalls::multiDraws, 1);
    EXPECT_EQ(countDrawnPixels(*image, 0, kSize / 2), int(kGridInstances / 2));
    EXPECT_EQ(countDrawnPixels(*image, kSize / 2, kSize), 0);
    std::vector<osg::DrawElementsIndirectCommand> commands = readCommands(*geometry);
    ASSERT_EQ(commands.size(), 1u);
    EXPECT_EQ(commands[0].instanceCount, kGridInstances / 2);

    // Culling again from the unchanged copies gives the same picture.
    image = renderFrame(scene.get());
    ASSERT_TRUE(image.valid());
    EXPECT_EQ(countDrawnPixels(*image), int(kGridInstances / 2));

    // Off: the pass goes, and the next draw puts every instance back with no
    // host update.
    CKVRenderStateManager::instance().setOcclusionCulling(false);
    scene->removeChild(occlusion.get());
    image = renderFrame(scene.get());
    ASSERT_TRUE(image.valid());
    EXPECT_EQ(countDrawnPixels(*image), int(kGridInstances));
    EXPECT_FALSE(geometry->getOcclusionApplied());
    commands = readCommands(*geometry);
    ASSERT_EQ(commands.size(), 1u);
    EXPECT_EQ(commands[0].instanceCount, kGridInstances);
    EXPECT_EQ(warnings(), "");
}

TEST_F(BufferGeometryGLTest, CullingSwitchedOnAfterTheRowsWereInstalledCopiesThem)
{
    CKVRenderStateManager::instance().setOcclusionCulling(false);
    kv_shared_ptr<CKVBufferGeometryImp> host = makeGrid();
    CKVOSGGeometry* geometry = host->getOSGGeometry();
    ASSERT_EQ(geometry->getInstanceMatrixRowCopy(0), nullptr);
    osg::ref_ptr<osg::Group> scene = makeScene(geometry, true);
    ASSERT_TRUE(renderFrame(scene.get()).valid());
    CKVRenderStateManager::instance().setOcclusionCulling(true);

    scene->addChild(makeOcclusionPass(geometry));
    osg::ref_ptr<osg::Image> image = renderFrame(scene.get());
    ASSERT_TRUE(image.valid());

    EXPECT_TRUE(geometry->getOcclusionApplied());
    ASSERT_NE(geometry->getInstanceMatrixRowCopy(3), nullptr);
    EXPECT_EQ(countDrawnPixels(*image, 0, kSize / 2), int(kGridInstances / 2));
    EXPECT_EQ(countDrawnPixels(*image, kSize / 2, kSize), 0);
    std::vector<osg::DrawElementsIndirectCommand> const commands = readCommands(*geometry);
    ASSERT_EQ(commands.size(), 1u);
    EXPECT_EQ(commands[0].instanceCount, kGridInstances / 2);
    EXPECT_EQ(warnings(), "");
}

} // namespace
} // namespace Kelvor
