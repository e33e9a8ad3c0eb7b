#include "viewer/CKVOSGVertexArrayState.h"

#include <osg/BufferObject>
#include <osg/GLExtensions>
#include <osg/State>

namespace Kelvor {

bool CKVOSGVertexArrayState::sUseBindingForm = false;

CKVOSGVertexArrayState::CKVOSGVertexArrayState(osg::State* state)
    : osg::VertexArrayState(state)
{
}

CKVOSGVertexArrayState::~CKVOSGVertexArrayState() = default;

CKVOSGVertexArrayState* CKVOSGVertexArrayState::create(osg::State& state, osg::Geometry const& geometry)
{
    CKVOSGVertexArrayState* vas = new CKVOSGVertexArrayState(&state);
    vas->assignDispatchersFor(geometry);
    // Generic attribute arrays keep the stock dispatches, in the slots the
    // alias dispatches left free.
    if (!geometry.getVertexAttribArrayList().empty())
        vas->osg::VertexArrayState::assignVertexAttribArrayDispatcher(geometry.getVertexAttribArrayList().size());
    if (state.useVertexArrayObject(geometry.getUseVertexArrayObject()))
        vas->generateVertexArrayObject();
    return vas;
}

void CKVOSGVertexArrayState::assignDispatchersFor(osg::Geometry const& geometry)
{
    if (geometry.getVertexArray() != nullptr)
        assignVertexArrayDispatcher();
    if (geometry.getColorArray() != nullptr)
        assignColorArrayDispatcher();
    if (geometry.getNormalArray() != nullptr)
        assignNormalArrayDispatcher();
    if (!geometry.getTexCoordArrayList().empty())
        assignTexCoordArrayDispatcher(geometry.getTexCoordArrayList().size());
}

void CKVOSGVertexArrayState::assignAliasDispatcher(osg::ref_ptr<ArrayDispatch>& slot, unsigned int location)
{
    if (slot.valid() && KVOSGVertexAttribArrayDispatch::isKind(*slot)
        && static_cast<KVOSGVertexAttribArrayDispatch&>(*slot).getUnit() == location)
        return;
    if (_vertexAttribArrays.size() <= location)
        _vertexAttribArrays.resize(location + 1);
    osg::ref_ptr<ArrayDispatch>& shared = _vertexAttribArrays[location];
    if (!shared.valid() || !KVOSGVertexAttribArrayDispatch::isKind(*shared))
        shared = new KVOSGVertexAttribArrayDispatch(location, 0);
    slot = shared;
}

void CKVOSGVertexArrayState::assignVertexArrayDispatcher()
{
    assignAliasDispatcher(_vertexArray, _state->getVertexAlias()._location);
}

void CKVOSGVertexArrayState::assignNormalArrayDispatcher()
{
    assignAliasDispatcher(_normalArray, _state->getNormalAlias()._location);
}

void CKVOSGVertexArrayState::assignColorArrayDispatcher()
{
    assignAliasDispatcher(_colorArray, _state->getColorAlias()._location);
}

void CKVOSGVertexArrayState::assignTexCoordArrayDispatcher(unsigned int numUnits)
{
    osg::State::VertexAttribAliasList const& aliases = _state->getTexCoordAliasList();
    _texCoordArrays.resize(numUnits);
    // A unit without an alias keeps no dispatch: setArray ignores it.
    for (unsigned int unit = 0; unit < numUnits && unit < aliases.size(); ++unit)
        assignAliasDispatcher(_texCoordArrays[unit], aliases[unit]._location);
}

void CKVOSGVertexArrayState::assignInstanceRowDispatcher(unsigned int row)
{
    if (row < kInstanceRowCount && !mInstanceRows[row].valid())
        mInstanceRows[row] = new KVOSGVertexAttribArrayDispatch(kFirstInstanceRowLocation + row, 1);
}

KVOSGVertexAttribArrayDispatch* CKVOSGVertexArrayState::getInstanceRowDispatch(unsigned int row) const
{
    return row < kInstanceRowCount ? mInstanceRows[row].get() : nullptr;
}

void CKVOSGVertexArrayState::setArray(ArrayDispatch* dispatch, osg::State& state, osg::Array const* array)
{
    if (dispatch == nullptr)
        return;
    if (array == nullptr)
    {
        if (dispatch->array != nullptr)
            disable(dispatch, state);
        return;
    }
    if (!dispatch->active)
    {
        dispatch->active = true;
        _activeDispatchers.push_back(dispatch);
    }
    if (dispatch->array == array && dispatch->modifiedCount == array->getModifiedCount())
        return;

    bool const hadArray = dispatch->array != nullptr;
    osg::GLBufferObject* vbo =
        isVertexBufferObjectSupported() ? array->getOrCreateGLBufferObject(state.getContextID()) : nullptr;
    if (!sUseBindingForm || !KVOSGVertexAttribArrayDispatch::isKind(*dispatch))
    {
        if (vbo != nullptr)
        {
            bindVertexBufferObject(vbo);
            if (hadArray)
                dispatch->dispatch(state, array, vbo);
            else
                dispatch->enable_and_dispatch(state, array, vbo);
        }
        else
        {
            unbindVertexBufferObject();
            if (hadArray)
                dispatch->dispatch(state, array);
            else
                dispatch->enable_and_dispatch(state, array);
        }
    }
    else if (vbo != nullptr)
    {
        bindWithFormat(static_cast<KVOSGVertexAttribArrayDispatch&>(*dispatch), *array, *vbo, hadArray);
    }
    dispatch->array = array;
    dispatch->modifiedCount = array->getModifiedCount();
}

void CKVOSGVertexArrayState::bindWithFormat(KVOSGVertexAttribArrayDispatch& dispatch, osg::Array const& array,
                                            osg::GLBufferObject& vbo, bool hadArray)
{
    unsigned int const unit = dispatch.getUnit();
    if (vbo.isDirty())
    {
        vbo.compileBuffer();
        _ext->glBindBuffer(GL_ARRAY_BUFFER_ARB, 0);
        setCurrentVertexBufferObject(nullptr);
    }
    if (!hadArray)
    {
        _ext->glEnableVertexAttribArray(unit);
        _ext->glVertexAttribFormat(unit, array.getDataSize(), array.getDataType(), array.getNormalize(), 0);
        _ext->glVertexAttribBinding(unit, unit);
    }
    _ext->glBindVertexBuffer(unit, vbo.getGLObjectID(), vbo.getOffset(array.getBufferIndex()), bindingStride(unit));
    if (dispatch.getDivisor() != 0)
    {
        if (!mBindingDivisorLookedUp)
        {
            osg::setGLExtensionFuncPtr(mBindingDivisor, "glVertexBindingDivisor", "glVertexBindingDivisorARB");
            mBindingDivisorLookedUp = true;
        }
        if (mBindingDivisor != nullptr)
            mBindingDivisor(unit, 1);
    }
}

GLintptr CKVOSGVertexArrayState::bindingStride(unsigned int unit)
{
    // The strides of the backend's arrays: vec3 positions and normals, vec2
    // texture coordinates, vec4 instance rows.
    switch (unit)
    {
    case 0:
    case 1:
        return 12;
    case 2:
        return 8;
    case 3:
    case 4:
    case 5:
    case 6:
        return 16;
    default:
        return 0;
    }
}

} // namespace Kelvor
