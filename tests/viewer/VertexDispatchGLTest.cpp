#include "support/GLTest.h"

#include "viewer/CKVOSGState.h"
#include "viewer/CKVOSGVertexArrayState.h"
#include "viewer/KVOSGVertexAttribArrayDispatch.h"

#include <gtest/gtest.h>

#include <osg/BufferObject>
#include <osg/Geode>
#include <osg/Geometry>
#include <osg/Program>
#include <osg/observer_ptr>
#include <osg/io_utils>

#include <cstdint>
#include <functional>
#include <string>

namespace Kelvor {
namespace {

constexpr int kImageSize = 64;
constexpr int kInstances = 3;
osg::Vec4 const kClear(0, 0, 0, 1);
osg::Vec4 const kQuadColour(0, 1, 0, 1);
// Instance places in clip space (the camera is identity).
osg::Vec2 const kPlaces[kInstances] = {{-0.5f, -0.5f}, {0.5f, -0.5f}, {0.0f, 0.5f}};

// The instance rows arrive as one mat4 at locations 3 to 6, as in the
// backend's surface shaders.
char const* const kVertexShader = R"(#version 330 compatibility
layout(location = 0) in vec3 osg_Vertex;
layout(location = 3) in mat4 kv_InstanceMatrix;
void main()
{
    gl_Position = gl_ModelViewProjectionMatrix * kv_InstanceMatrix * vec4(osg_Vertex, 1.0);
}
)";

char const* const kFragmentShader = R"(#version 330 compatibility
void main()
{
    gl_FragColor = vec4(0.0, 1.0, 0.0, 1.0);
}
)";

// A geometry drawn through CKVOSGVertexArrayState with four instance row
// arrays, the way the backend's buffer geometry does.
class InstancedGeometry : public osg::Geometry
{
public:
    osg::ref_ptr<osg::Array> rows[CKVOSGVertexArrayState::kInstanceRowCount];

    osg::VertexArrayState* createVertexArrayStateImplementation(osg::RenderInfo& renderInfo) const override
    {
        CKVOSGVertexArrayState* vas = CKVOSGVertexArrayState::create(*renderInfo.getState(), *this);
        for (unsigned int row = 0; row < CKVOSGVertexArrayState::kInstanceRowCount; ++row)
            if (rows[row].valid())
                vas->assignInstanceRowDispatcher(row);
        return vas;
    }

    void drawImplementation(osg::RenderInfo& renderInfo) const override
    {
        osg::State& state = *renderInfo.getState();
        // Without a vertex array object the stock global state would be current.
        if (!state.useVertexArrayObject(_useVertexArrayObject))
            return;
        auto* vas = static_cast<CKVOSGVertexArrayState*>(state.getCurrentVertexArrayState());
        vas->setVertexBufferObjectSupported(true);
        if (vas->getRequiresSetArrays())
        {
            vas->lazyDisablingOfVertexAttributes();
            vas->setVertexArray(state, _vertexArray.get());
            for (unsigned int row = 0; row < CKVOSGVertexArrayState::kInstanceRowCount; ++row)
                vas->setInstanceRowArray(state, row, rows[row].get());
            vas->applyDisablingOfVertexAttributes(state);
        }
        drawPrimitivesImplementation(renderInfo);
    }
};

osg::ref_ptr<InstancedGeometry> makeInstancedQuads(bool indexed)
{
    osg::ref_ptr<InstancedGeometry> geometry = new InstancedGeometry;
    osg::ref_ptr<osg::Vec3Array> vertices = new osg::Vec3Array;
    for (osg::Vec3 const& corner : {osg::Vec3(-0.15f, -0.15f, 0), osg::Vec3(0.15f, -0.15f, 0),
                                    osg::Vec3(0.15f, 0.15f, 0), osg::Vec3(-0.15f, 0.15f, 0)})
        vertices->push_back(corner);
    geometry->setVertexArray(vertices.get());
    geometry->setUseVertexBufferObjects(true);
    geometry->setUseVertexArrayObject(true);

    // All four rows in one buffer, one after the other.
    osg::ref_ptr<osg::VertexBufferObject> rowBuffer = new osg::VertexBufferObject;
    for (unsigned int row = 0; row < CKVOSGVertexArrayState::kInstanceRowCount; ++row)
    {
        osg::ref_ptr<osg::Vec4Array> values = new osg::Vec4Array;
        for (osg::Vec2 const& place : kPlaces)
        {
            osg::Matrixf const instance = osg::Matrixf::translate(place.x(), place.y(), 0);
            values->push_back(osg::Vec4(instance(row, 0), instance(row, 1), instance(row, 2), instance(row, 3)));
        }
        values->setBufferObject(rowBuffer.get());
        geometry->rows[row] = values;
    }

    if (indexed)
    {
        osg::ref_ptr<osg::DrawElementsUShort> elements = new osg::DrawElementsUShort(GL_TRIANGLES);
        elements->setNumInstances(kInstances);
        for (unsigned short index : {0, 1, 2, 0, 2, 3})
            elements->push_back(index);
        geometry->addPrimitiveSet(elements.get());
    }
    else
    {
        geometry->addPrimitiveSet(new osg::DrawArrays(GL_TRIANGLE_FAN, 0, 4, kInstances));
    }
    return geometry;
}

osg::ref_ptr<osg::Node> makeScene(osg::Drawable* drawable)
{
    osg::ref_ptr<osg::Geode> geode = new osg::Geode;
    geode->addDrawable(drawable);
    // Instances lie outside the quad's own bound.
    geode->setCullingActive(false);
    drawable->setCullingActive(false);
    osg::ref_ptr<osg::Program> program = new osg::Program;
    program->addShader(new osg::Shader(osg::Shader::VERTEX, kVertexShader));
    program->addShader(new osg::Shader(osg::Shader::FRAGMENT, kFragmentShader));
    geode->getOrCreateStateSet()->setAttributeAndModes(program.get());
    return geode;
}

osg::Vec2i pixelAt(osg::Vec2 const& clip)
{
    return osg::Vec2i(static_cast<int>((clip.x() + 1.0f) * 0.5f * kImageSize),
                      static_cast<int>((clip.y() + 1.0f) * 0.5f * kImageSize));
}

void expectColour(osg::Image const& image, osg::Vec2 const& clip, osg::Vec4 const& expected, std::string const& what)
{
    osg::Vec2i const pixel = pixelAt(clip);
    osg::Vec4 const actual = image.getColor(pixel.x(), pixel.y());
    for (int c = 0; c < 4; ++c)
        EXPECT_NEAR(actual[c], expected[c], 0.02) << what << " at " << clip << " channel " << c;
}

// Counts what setArray asks of a dispatch, then does it.
class CountingDispatch : public KVOSGVertexAttribArrayDispatch
{
public:
    using KVOSGVertexAttribArrayDispatch::KVOSGVertexAttribArrayDispatch;

    void enable_and_dispatch(osg::State& state, osg::Array const* array) override
    {
        ++enables;
        KVOSGVertexAttribArrayDispatch::enable_and_dispatch(state, array);
    }
    void enable_and_dispatch(osg::State& state, osg::Array const* array, osg::GLBufferObject const* vbo) override
    {
        ++enables;
        KVOSGVertexAttribArrayDispatch::enable_and_dispatch(state, array, vbo);
    }
    void dispatch(osg::State& state, osg::Array const* array) override
    {
        ++dispatches;
        KVOSGVertexAttribArrayDispatch::dispatch(state, array);
    }
    void dispatch(osg::State& state, osg::Array const* array, osg::GLBufferObject const* vbo) override
    {
        ++dispatches;
        KVOSGVertexAttribArrayDispatch::dispatch(state, array, vbo);
    }
    void disable(osg::State& state) override
    {
        ++disables;
        KVOSGVertexAttribArrayDispatch::disable(state);
    }

    int enables = 0;
    int dispatches = 0;
    int disables = 0;
};

GLint attribute(osg::GLExtensions& gl, GLuint location, GLenum what)
{
    GLint value = -1;
    gl.glGetVertexAttribiv(location, what, &value);
    return value;
}

GLvoid* attributePointer(osg::GLExtensions& gl, GLuint location)
{
    GLvoid* pointer = nullptr;
    gl.glGetVertexAttribPointerv(location, GL_VERTEX_ATTRIB_ARRAY_POINTER, &pointer);
    return pointer;
}

class VertexDispatchGLTest : public GLTest
{
protected:
    void SetUp() override
    {
        GLTest::SetUp();
        if (IsSkipped() || HasFatalFailure())
            return;
        ASSERT_NE(CKVOSGState::install(*context().graphicsContext()), nullptr);
        osg::Camera& camera = *context().camera();
        camera.setViewMatrix(osg::Matrixd());
        camera.setProjectionMatrix(osg::Matrixd());
        camera.setComputeNearFarMode(osg::CullSettings::DO_NOT_COMPUTE_NEAR_FAR);
        camera.setClearColor(kClear);
    }

    void TearDown() override
    {
        CKVOSGVertexArrayState::setUseBindingForm(false);
        GLTest::TearDown();
    }

    void expectInstancesDrawn(bool indexed)
    {
        osg::ref_ptr<osg::Node> scene = makeScene(makeInstancedQuads(indexed).get());
        osg::ref_ptr<osg::Image> image = context().renderFrames(scene.get(), 2, kImageSize, kImageSize);
        ASSERT_TRUE(image.valid()) << context().error();
        for (int i = 0; i < kInstances; ++i)
            expectColour(*image, kPlaces[i], kQuadColour, "instance " + std::to_string(i));
        expectColour(*image, osg::Vec2(0, 0), kClear, "the untranslated quad");
        expectColour(*image, osg::Vec2(0.5f, 0.5f), kClear, "no instance");
    }

    // Runs `work` with a vertex array state of the installed state current.
    // The default vertex array object stays bound: Mesa refuses client-side
    // arrays in any other.
    void withVertexArrayState(std::function<void(osg::State&, CKVOSGVertexArrayState&, osg::GLExtensions&)> const& work)
    {
        ASSERT_TRUE(context().runWithContext([&](osg::State& state) {
            osg::GLExtensions& gl = *state.get<osg::GLExtensions>();
            osg::ref_ptr<CKVOSGVertexArrayState> vas = new CKVOSGVertexArrayState(&state);
            state.setCurrentVertexArrayState(vas.get());
            state.unbindVertexArrayObject();
            work(state, *vas, gl);
            vas->unbindVertexBufferObject();
            state.setCurrentToGlobalVertexArrayState();
        }));
    }
};

TEST_F(VertexDispatchGLTest, InstanceRowsPlaceEachInstanceOfDrawArraysAndDrawElementsInBothForms)
{
    for (bool bindingForm : {false, true}) {
        SCOPED_TRACE(bindingForm ? "binding form" : "pointer form");
        CKVOSGVertexArrayState::setUseBindingForm(bindingForm);
        expectInstancesDrawn(false);
        expectInstancesDrawn(true);
    }
}

TEST_F(VertexDispatchGLTest, CreateUsesTheLocationsOfTheStatesAliases)
{
    osg::ref_ptr<osg::Geometry> geometry = new osg::Geometry;
    geometry->setVertexArray(new osg::Vec3Array(1));
    geometry->setNormalArray(new osg::Vec3Array(1), osg::Array::BIND_PER_VERTEX);
    geometry->setColorArray(new osg::Vec4Array(1), osg::Array::BIND_PER_VERTEX);
    geometry->setTexCoordArray(0, new osg::Vec2Array(1));
    geometry->setUseVertexArrayObject(true);
    ASSERT_TRUE(context().runWithContext([&](osg::State& state) {
        osg::ref_ptr<CKVOSGVertexArrayState> vas = CKVOSGVertexArrayState::create(state, *geometry);
        vas->assignInstanceMatrixR1Dispatcher();
        vas->assignInstanceMatrixR4Dispatcher();
        auto unitOf = [](osg::VertexArrayState::ArrayDispatch* dispatch) {
            EXPECT_TRUE(dispatch != nullptr && KVOSGVertexAttribArrayDispatch::isKind(*dispatch));
            return dispatch != nullptr ? static_cast<KVOSGVertexAttribArrayDispatch*>(dispatch)->getUnit() : 99u;
        };
        EXPECT_EQ(unitOf(vas->_vertexArray.get()), 0u);
        EXPECT_EQ(unitOf(vas->_normalArray.get()), 1u);
        EXPECT_EQ(unitOf(vas->_texCoordArrays[0].get()), 2u);
        EXPECT_EQ(unitOf(vas->_colorArray.get()), 7u);
        ASSERT_NE(vas->getInstanceRowDispatch(0), nullptr);
        EXPECT_EQ(vas->getInstanceRowDispatch(0)->getUnit(), 3u);
        EXPECT_EQ(vas->getInstanceRowDispatch(0)->getDivisor(), 1u);
        EXPECT_EQ(vas->getInstanceRowDispatch(1), nullptr);
        EXPECT_EQ(vas->getInstanceRowDispatch(3)->getUnit(), 6u);
        EXPECT_EQ(vas->_vertexArray->className(), std::string("KVOSGVertexAttribArrayDispatch"));
        EXPECT_NE(vas->getVertexArrayObject(), 0u);
        vas->deleteVertexArrayObject();
    }));
}

TEST_F(VertexDispatchGLTest, DispatchersSurviveTheGeometrysStockReassignment)
{
    osg::ref_ptr<osg::Geometry> geometry = new osg::Geometry;
    geometry->setVertexArray(new osg::Vec3Array(1));
    ASSERT_TRUE(context().runWithContext([&](osg::State& state) {
        ASSERT_FALSE(state.getUseVertexAttributeAliasing());
        osg::ref_ptr<CKVOSGVertexArrayState> vas = CKVOSGVertexArrayState::create(state, *geometry);
        osg::observer_ptr<osg::VertexArrayState::ArrayDispatch> ours(vas->_vertexArray.get());
        vas->_activeDispatchers.push_back(vas->_vertexArray.get());

        // What osg::Geometry::setVertexArray does to its vertex array states.
        static_cast<osg::VertexArrayState&>(*vas).assignVertexArrayDispatcher();
        ASSERT_FALSE(KVOSGVertexAttribArrayDispatch::isKind(*vas->_vertexArray));
        // The active list still points at it: it must live on.
        ASSERT_TRUE(ours.valid());

        vas->assignDispatchersFor(*geometry);
        EXPECT_EQ(vas->_vertexArray.get(), vas->_activeDispatchers.back());
    }));
}

TEST_F(VertexDispatchGLTest, UnchangedArrayIsNotDispatchedAgainAndNullDisables)
{
    withVertexArrayState([](osg::State& state, CKVOSGVertexArrayState& vas, osg::GLExtensions& gl) {
        vas.setVertexBufferObjectSupported(false);
        osg::ref_ptr<CountingDispatch> dispatch = new CountingDispatch(5, 1);
        osg::ref_ptr<osg::Vec4Array> array = new osg::Vec4Array(3);

        vas.setArray(dispatch.get(), state, array.get());
        EXPECT_EQ(dispatch->enables, 1);
        EXPECT_EQ(attribute(gl, 5, GL_VERTEX_ATTRIB_ARRAY_ENABLED), GL_TRUE);
        EXPECT_EQ(attribute(gl, 5, GL_VERTEX_ATTRIB_ARRAY_DIVISOR), 1);
        EXPECT_EQ(attribute(gl, 5, GL_VERTEX_ATTRIB_ARRAY_SIZE), 4);
        EXPECT_EQ(attributePointer(gl, 5), array->getDataPointer());

        vas.setArray(dispatch.get(), state, array.get());
        EXPECT_EQ(dispatch->enables + dispatch->dispatches, 1) << "same array, same modified count";

        array->dirty();
        vas.setArray(dispatch.get(), state, array.get());
        EXPECT_EQ(dispatch->enables, 1);
        EXPECT_EQ(dispatch->dispatches, 1) << "a changed array is sent again without enabling again";

        osg::ref_ptr<osg::Vec4Array> other = new osg::Vec4Array(2);
        vas.setArray(dispatch.get(), state, other.get());
        EXPECT_EQ(dispatch->dispatches, 2);
        EXPECT_EQ(attributePointer(gl, 5), other->getDataPointer());

        vas.setArray(dispatch.get(), state, nullptr);
        EXPECT_EQ(dispatch->disables, 1);
        EXPECT_EQ(attribute(gl, 5, GL_VERTEX_ATTRIB_ARRAY_ENABLED), GL_FALSE);
        EXPECT_EQ(dispatch->array, nullptr);
        vas.setArray(dispatch.get(), state, nullptr);
        EXPECT_EQ(dispatch->disables, 1) << "nothing left to disable";

        // After disabling, the next array is enabled anew.
        vas.setArray(dispatch.get(), state, array.get());
        EXPECT_EQ(dispatch->enables, 2);
        EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
        vas.setArray(dispatch.get(), state, nullptr);
        gl.glVertexAttribDivisor(5, 0);
    });
}

TEST_F(VertexDispatchGLTest, PointerCallFollowsTheArraysType)
{
    withVertexArrayState([](osg::State& state, CKVOSGVertexArrayState& vas, osg::GLExtensions& gl) {
        vas.setVertexBufferObjectSupported(false);
        osg::ref_ptr<KVOSGVertexAttribArrayDispatch> integer = new KVOSGVertexAttribArrayDispatch(8, 0);
        osg::ref_ptr<KVOSGVertexAttribArrayDispatch> converted = new KVOSGVertexAttribArrayDispatch(9, 0);
        osg::ref_ptr<KVOSGVertexAttribArrayDispatch> normalized = new KVOSGVertexAttribArrayDispatch(10, 0);
        osg::ref_ptr<KVOSGVertexAttribArrayDispatch> dbl = new KVOSGVertexAttribArrayDispatch(11, 0);

        osg::ref_ptr<osg::Vec4iArray> integers = new osg::Vec4iArray(2);
        integers->setPreserveDataType(true);
        vas.setArray(integer.get(), state, integers.get());
        osg::ref_ptr<osg::Vec4iArray> convertedIntegers = new osg::Vec4iArray(2);
        vas.setArray(converted.get(), state, convertedIntegers.get());
        osg::ref_ptr<osg::Vec4ubArray> bytes = new osg::Vec4ubArray(2);
        bytes->setNormalize(true);
        vas.setArray(normalized.get(), state, bytes.get());
        osg::ref_ptr<osg::Vec3dArray> doubles = new osg::Vec3dArray(2);
        doubles->setPreserveDataType(true);
        vas.setArray(dbl.get(), state, doubles.get());

        EXPECT_EQ(attribute(gl, 8, GL_VERTEX_ATTRIB_ARRAY_INTEGER), GL_TRUE);
        EXPECT_EQ(attribute(gl, 9, GL_VERTEX_ATTRIB_ARRAY_INTEGER), GL_FALSE);
        EXPECT_EQ(attribute(gl, 10, GL_VERTEX_ATTRIB_ARRAY_NORMALIZED), GL_TRUE);
        EXPECT_EQ(attribute(gl, 10, GL_VERTEX_ATTRIB_ARRAY_TYPE), GL_UNSIGNED_BYTE);
        EXPECT_EQ(attribute(gl, 11, GL_VERTEX_ATTRIB_ARRAY_LONG), GL_TRUE);
        EXPECT_EQ(attribute(gl, 11, GL_VERTEX_ATTRIB_ARRAY_DIVISOR), 0);
        EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
        for (GLuint location = 8; location <= 11; ++location)
            gl.glDisableVertexAttribArray(location);
    });
}

TEST_F(VertexDispatchGLTest, ArraysInASharedBufferPointAtTheirOffsets)
{
    withVertexArrayState([](osg::State& state, CKVOSGVertexArrayState& vas, osg::GLExtensions& gl) {
        osg::ref_ptr<osg::VertexBufferObject> buffer = new osg::VertexBufferObject;
        osg::ref_ptr<osg::Vec4Array> first = new osg::Vec4Array(3);
        osg::ref_ptr<osg::Vec4Array> second = new osg::Vec4Array(3);
        first->setBufferObject(buffer.get());
        second->setBufferObject(buffer.get());
        osg::ref_ptr<KVOSGVertexAttribArrayDispatch> row1 = new KVOSGVertexAttribArrayDispatch(3, 1);
        osg::ref_ptr<KVOSGVertexAttribArrayDispatch> row2 = new KVOSGVertexAttribArrayDispatch(4, 1);

        vas.setArray(row1.get(), state, first.get());
        vas.setArray(row2.get(), state, second.get());

        osg::GLBufferObject* glBuffer = buffer->getGLBufferObject(state.getContextID());
        ASSERT_NE(glBuffer, nullptr);
        for (GLuint location : {3u, 4u})
            EXPECT_EQ(static_cast<GLuint>(attribute(gl, location, GL_VERTEX_ATTRIB_ARRAY_BUFFER_BINDING)),
                      glBuffer->getGLObjectID());
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(attributePointer(gl, 3)), 0u);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(attributePointer(gl, 4)), 3 * sizeof(osg::Vec4));
        EXPECT_EQ(attribute(gl, 4, GL_VERTEX_ATTRIB_ARRAY_DIVISOR), 1);
        for (GLuint location : {3u, 4u})
        {
            gl.glVertexAttribDivisor(location, 0);
            gl.glDisableVertexAttribArray(location);
        }
        buffer->releaseGLObjects(&state);
    });
}

} // namespace
} // namespace Kelvor
