#include "viewer/KVOSGVertexAttribArrayDispatch.h"

#include <osg/BufferObject>
#include <osg/State>

#include <cstdint>
#include <cstring>

namespace Kelvor {

namespace {

GLvoid const* offsetInBuffer(osg::Array const& array, osg::GLBufferObject const& vbo)
{
    return reinterpret_cast<GLvoid const*>(static_cast<std::intptr_t>(vbo.getOffset(array.getBufferIndex())));
}

} // namespace

KVOSGVertexAttribArrayDispatch::KVOSGVertexAttribArrayDispatch(unsigned int unit, unsigned int divisor)
    : mUnit(unit)
    , mDivisor(divisor)
{
}

KVOSGVertexAttribArrayDispatch::~KVOSGVertexAttribArrayDispatch() = default;

bool KVOSGVertexAttribArrayDispatch::isKind(osg::VertexArrayState::ArrayDispatch const& dispatch)
{
    return std::strcmp(dispatch.className(), "KVOSGVertexAttribArrayDispatch") == 0;
}

osg::GLExtensions* KVOSGVertexAttribArrayDispatch::extensions(osg::State& state)
{
    // The vertex array state's own copy: it is the one its buffers were made with.
    osg::VertexArrayState* vas = state.getCurrentVertexArrayState();
    return vas != nullptr && vas->_ext.valid() ? vas->_ext.get() : state.get<osg::GLExtensions>();
}

void KVOSGVertexAttribArrayDispatch::pointer(osg::GLExtensions& gl, osg::Array const& array, GLvoid const* data) const
{
    GLint const size = array.getDataSize();
    GLenum const type = array.getDataType();
    // Only an array that asks to keep its type reaches the shader as double
    // or integer; any other converts to float like a fixed-function array.
    if (array.getPreserveDataType() && type == GL_DOUBLE)
        gl.glVertexAttribLPointer(mUnit, size, type, 0, data);
    else if (array.getPreserveDataType() && type != GL_FLOAT)
        gl.glVertexAttribIPointer(mUnit, size, type, 0, data);
    else
        gl.glVertexAttribPointer(mUnit, size, type, array.getNormalize(), 0, data);
    applyDivisor(gl);
}

void KVOSGVertexAttribArrayDispatch::applyDivisor(osg::GLExtensions& gl) const
{
    if (mDivisor != 0 && gl.glVertexAttribDivisor != nullptr)
        gl.glVertexAttribDivisor(mUnit, mDivisor);
}

void KVOSGVertexAttribArrayDispatch::enable_and_dispatch(osg::State& state, osg::Array const* array)
{
    osg::GLExtensions& gl = *extensions(state);
    gl.glEnableVertexAttribArray(mUnit);
    pointer(gl, *array, array->getDataPointer());
}

void KVOSGVertexAttribArrayDispatch::enable_and_dispatch(osg::State& state, osg::Array const* array,
                                                         osg::GLBufferObject const* vbo)
{
    osg::GLExtensions& gl = *extensions(state);
    gl.glEnableVertexAttribArray(mUnit);
    pointer(gl, *array, offsetInBuffer(*array, *vbo));
}

void KVOSGVertexAttribArrayDispatch::enable_and_dispatch(osg::State& state, GLint size, GLenum type, GLsizei stride,
                                                         GLvoid const* pointer, GLboolean normalized)
{
    osg::GLExtensions& gl = *extensions(state);
    gl.glEnableVertexAttribArray(mUnit);
    gl.glVertexAttribPointer(mUnit, size, type, normalized, stride, pointer);
    applyDivisor(gl);
}

void KVOSGVertexAttribArrayDispatch::dispatch(osg::State& state, osg::Array const* array)
{
    pointer(*extensions(state), *array, array->getDataPointer());
}

void KVOSGVertexAttribArrayDispatch::dispatch(osg::State& state, osg::Array const* array,
                                              osg::GLBufferObject const* vbo)
{
    pointer(*extensions(state), *array, offsetInBuffer(*array, *vbo));
}

void KVOSGVertexAttribArrayDispatch::dispatch(osg::State& state, GLint size, GLenum type, GLsizei stride,
                                              GLvoid const* pointer, GLboolean normalized)
{
    osg::GLExtensions& gl = *extensions(state);
    gl.glVertexAttribPointer(mUnit, size, type, normalized, stride, pointer);
    applyDivisor(gl);
}

void KVOSGVertexAttribArrayDispatch::disable(osg::State& state)
{
    extensions(state)->glDisableVertexAttribArray(mUnit);
}

} // namespace Kelvor
