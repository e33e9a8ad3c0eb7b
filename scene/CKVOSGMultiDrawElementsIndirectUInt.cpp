#include "scene/CKVOSGMultiDrawElementsIndirectUInt.h"

#include <osg/BufferObject>
#include <osg/GLExtensions>
#include <osg/State>

#include <cstdint>

namespace Kelvor {

CKVOSGMultiDrawElementsIndirectUInt::CKVOSGMultiDrawElementsIndirectUInt(CKVVertexIndexImp* owner, GLenum mode)
    : osg::MultiDrawElementsIndirectUInt(mode, 0)
    , mOwner(owner)
{
}

CKVOSGMultiDrawElementsIndirectUInt::~CKVOSGMultiDrawElementsIndirectUInt() = default;

unsigned int CKVOSGMultiDrawElementsIndirectUInt::getNumCommands() const
{
    if (_count > 0)
        return _count;
    return _indirectCommandArray.valid() ? _indirectCommandArray->getNumElements() : 0u;
}

void CKVOSGMultiDrawElementsIndirectUInt::draw(osg::State& state, bool) const
{
    // No segments means no commands: issue nothing rather than a call that
    // draws nothing.
    unsigned int const numCommands = getNumCommands();
    if (numCommands == 0 || empty() || !_indirectCommandArray->getBufferObject())
        return;

    unsigned int const contextID = state.getContextID();
    osg::GLBufferObject* commands = _indirectCommandArray->getBufferObject()->getOrCreateGLBufferObject(contextID);
    osg::GLBufferObject* indices = getOrCreateGLBufferObject(contextID);
    if (!commands || !indices)
        return;
    state.bindDrawIndirectBufferObject(commands);
    // Uploads indices that changed since the last draw; the vertex array
    // object keeps the binding otherwise.
    state.bindElementBufferObject(indices);

    GLintptr const first = static_cast<GLintptr>(commands->getOffset(_indirectCommandArray->getBufferIndex()));
    osg::GLExtensions* gl = state.get<osg::GLExtensions>();
    if (gl->glMultiDrawElementsIndirect)
    {
        gl->glMultiDrawElementsIndirect(_mode, GL_UNSIGNED_INT, reinterpret_cast<GLvoid const*>(first),
                                        static_cast<GLsizei>(numCommands), _stride);
        return;
    }
    if (!gl->glDrawElementsIndirect)
        return;
    // Without multi-draw each command is its own call, at its own place in
    // the command buffer.
    GLintptr const stride = _stride != 0 ? _stride : static_cast<GLintptr>(_indirectCommandArray->getElementSize());
    for (unsigned int i = 0; i < numCommands; ++i)
        gl->glDrawElementsIndirect(_mode, GL_UNSIGNED_INT, reinterpret_cast<GLvoid const*>(first + i * stride));
}

void CKVOSGMultiDrawElementsIndirectUInt::accept(osg::PrimitiveFunctor& functor) const
{
    if (!empty())
        functor.drawElements(_mode, static_cast<GLsizei>(size()), &front());
}

void CKVOSGMultiDrawElementsIndirectUInt::accept(osg::PrimitiveIndexFunctor& functor) const
{
    if (!empty())
        functor.drawElements(_mode, static_cast<GLsizei>(size()), &front());
}

void CKVOSGMultiDrawElementsIndirectUInt::resizeGLObjectBuffers(unsigned int maxSize)
{
    osg::MultiDrawElementsIndirectUInt::resizeGLObjectBuffers(maxSize);
    if (_indirectCommandArray.valid())
        _indirectCommandArray->resizeGLObjectBuffers(maxSize);
}

void CKVOSGMultiDrawElementsIndirectUInt::releaseGLObjects(osg::State* state) const
{
    osg::MultiDrawElementsIndirectUInt::releaseGLObjects(state);
    if (_indirectCommandArray.valid())
        _indirectCommandArray->releaseGLObjects(state);
}

} // namespace Kelvor
