#include "viewer/CKVOSGState.h"

#include <osg/BufferObject>
#include <osg/DisplaySettings>
#include <osg/FrameStamp>
#include <osg/GLExtensions>
#include <osg/GraphicsContext>

#include <algorithm>
#include <string>

namespace Kelvor {

namespace {

// Byte layout of the blocks (std140: a mat4 is 64 bytes).
constexpr unsigned int kMatrixBytes = 64;
constexpr unsigned int kMatrixFloats = 16;
// CameraInfo: view, view inverse, view-projection, projection.
constexpr unsigned int kViewSlot = 0;
constexpr unsigned int kViewInverseSlot = 1;
constexpr unsigned int kViewProjectionSlot = 2;
constexpr unsigned int kProjectionSlot = 3;
// EntityInfo: model, last model.
constexpr unsigned int kModelSlot = 0;
constexpr unsigned int kLastModelSlot = 1;

constexpr unsigned int kFirstUnusedTexCoordLocation = 8;
constexpr unsigned int kStockTextureUnits = 8;

void putMatrix(float* block, unsigned int slot, osg::Matrixf const& matrix)
{
    float const* source = matrix.ptr();
    std::copy(source, source + kMatrixFloats, block + slot * kMatrixFloats);
}

} // namespace

CKVOSGState::CKVOSGState()
    : mProjection(_identity)
    , mModel(_identity)
    , mView(_identity)
    , mModelCache(new osg::RefMatrix)
    , mViewCache(new osg::RefMatrix)
{
}

CKVOSGState::~CKVOSGState() = default;

CKVOSGState* CKVOSGState::install(osg::GraphicsContext& context)
{
    osg::ref_ptr<CKVOSGState> state = new CKVOSGState;
    return install(context, *state) ? state.get() : nullptr;
}

bool CKVOSGState::install(osg::GraphicsContext& context, CKVOSGState& state)
{
    osg::State* stock = context.getState();
    if (stock == nullptr)
        return false;
    if (stock == &state)
        return true;
    state.setContextID(stock->getContextID());
    state.setGraphicsContext(&context);
    state.setDisplaySettings(const_cast<osg::DisplaySettings*>(stock->getDisplaySettings()));
    state.setUseModelViewAndProjectionUniforms(stock->getUseModelViewAndProjectionUniforms());
    state.setUseVertexAttributeAliasing(stock->getUseVertexAttributeAliasing());
    state.setCheckForGLErrors(stock->getCheckForGLErrors());
    state.setUpVertexAttribAliases();
    // Pool sizes reach the per-context managers, which the stock state set.
    state._maxTexturePoolSize = stock->getMaxTexturePoolSize();
    state._maxBufferObjectPoolSize = stock->getMaxBufferObjectPoolSize();
    context.setState(&state);
    return true;
}

CKVOSGState* CKVOSGState::asKVState(osg::State& state)
{
    // osg::State is no osg::Object, so there is no class name to compare.
    return dynamic_cast<CKVOSGState*>(&state);
}

void CKVOSGState::setUpVertexAttribAliases()
{
    _texCoordAliasList.clear();
    _attributeBindingList.clear();

    setUpVertexAttribAlias(_vertexAlias, 0, "gl_Vertex", "osg_Vertex", "vec3 ");
    setUpVertexAttribAlias(_normalAlias, 1, "gl_Normal", "osg_Normal", "vec3 ");
    _texCoordAliasList.resize(kStockTextureUnits);
    setUpVertexAttribAlias(_texCoordAliasList[0], 2, "gl_MultiTexCoord0", "osg_MultiTexCoord0", "vec2 ");
    for (unsigned int row = 0; row < kInstanceRowCount; ++row)
    {
        std::string const name = "kv_InstanceMatrixR" + std::to_string(row + 1);
        setUpVertexAttribAlias(mInstanceRowAliases[row], 3 + row, name, name, "vec4 ");
    }
    setUpVertexAttribAlias(_colorAlias, 7, "gl_Color", "osg_Color", "vec4 ");
    for (unsigned int unit = 1; unit < kStockTextureUnits; ++unit)
    {
        std::string const suffix = std::to_string(unit);
        setUpVertexAttribAlias(_texCoordAliasList[unit], kFirstUnusedTexCoordLocation + unit - 1,
                               "gl_MultiTexCoord" + suffix, "osg_MultiTexCoord" + suffix, "vec4 ");
    }
}

void CKVOSGState::applyProjectionMatrix(osg::RefMatrix const* projection)
{
    // The stock call keeps the fixed-function matrix and the osg_ uniforms
    // in step; it compares against what stock leaves applied, which may
    // differ from what the blocks hold.
    osg::State::applyProjectionMatrix(projection);
    osg::RefMatrix const* current = projection != nullptr ? projection : _identity.get();
    if (current == mProjection.get())
        return;
    mProjection = current;
    mProjectionDirty = true;
}

void CKVOSGState::applyMatrices(osg::RefMatrix const* modelView, osg::RefMatrix const* model,
                                osg::RefMatrix const* view, osg::Matrixf const& lastModel)
{
    osg::RefMatrix const* currentModel = model != nullptr ? model : _identity.get();
    bool const modelChanged = currentModel != mModel.get();
    if (modelChanged)
        mModel = currentModel;
    bool const lastModelChanged = lastModel != mLastModel;
    if (lastModelChanged)
        mLastModel = lastModel;
    updateEntityInfo(modelChanged, lastModelChanged);

    osg::RefMatrix const* currentView = view != nullptr ? view : _identity.get();
    bool const viewChanged = currentView != mView.get();
    if (viewChanged)
        mView = currentView;
    updateCameraInfo(viewChanged, mProjectionDirty);

    osg::State::applyModelViewMatrix(modelView);
}

void CKVOSGState::applyMatrices(osg::RefMatrix const* modelView, osg::Matrixd const& model,
                                osg::Matrixd const& view, osg::Matrixf const& lastModel)
{
    bool const modelChanged = *mModel != model;
    if (modelChanged)
    {
        mModelCache->set(model);
        mModel = mModelCache;
    }
    bool const lastModelChanged = lastModel != mLastModel;
    if (lastModelChanged)
        mLastModel = lastModel;
    updateEntityInfo(modelChanged, lastModelChanged);

    bool const viewChanged = *mView != view;
    if (viewChanged)
    {
        mViewCache->set(view);
        mView = mViewCache;
    }
    updateCameraInfo(viewChanged, mProjectionDirty);

    osg::State::applyModelViewMatrix(modelView);
}

osg::Matrixf const& CKVOSGState::lastModelMatrix(osg::Drawable const& drawable, osg::Matrixd const& model)
{
    unsigned int const frameNumber = getFrameStamp() != nullptr ? getFrameStamp()->getFrameNumber() : 0u;
    return mLastModels.lastModelMatrix(&drawable, model, frameNumber);
}

osg::GLBufferObject* CKVOSGState::uniformBuffer(osg::FloatArray* array, bool& reloaded)
{
    reloaded = false;
    if (array == nullptr)
        return nullptr;
    osg::GLBufferObject* buffer = array->getGLBufferObject(getContextID());
    if (buffer == nullptr || buffer->getGLObjectID() == 0)
        return nullptr;
    // Left dirty, the upload would come with the binding's next apply and
    // overwrite what is written here.
    if (buffer->isDirty())
    {
        buffer->compileBuffer();
        reloaded = true;
    }
    return buffer;
}

void CKVOSGState::updateEntityInfo(bool modelChanged, bool lastModelChanged)
{
    bool reloaded = false;
    osg::GLBufferObject* buffer = uniformBuffer(mEntityArray.get(), reloaded);
    if (buffer == nullptr)
    {
        // Its first upload will show the array, not these matrices.
        mEntityStale = true;
        return;
    }
    if (reloaded || mEntityStale)
        modelChanged = lastModelChanged = true;
    if (!modelChanged && !lastModelChanged)
        return;

    float block[2 * kMatrixFloats];
    if (modelChanged)
        putMatrix(block, kModelSlot, osg::Matrixf(*mModel));
    if (lastModelChanged)
        putMatrix(block, kLastModelSlot, mLastModel);
    unsigned int const first = modelChanged ? kModelSlot : kLastModelSlot;
    unsigned int const last = lastModelChanged ? kLastModelSlot : kModelSlot;
    write(*buffer, *mEntityArray, first * kMatrixBytes, (last - first + 1) * kMatrixBytes,
          block + first * kMatrixFloats);
    mEntityStale = false;
}

void CKVOSGState::updateCameraInfo(bool viewChanged, bool projectionChanged)
{
    bool reloaded = false;
    osg::GLBufferObject* buffer = uniformBuffer(mCameraArray.get(), reloaded);
    if (buffer == nullptr)
    {
        mCameraStale = true;
        return;
    }
    if (reloaded || mCameraStale)
        viewChanged = projectionChanged = true;
    if (!viewChanged && !projectionChanged)
        return;

    float block[4 * kMatrixFloats];
    if (viewChanged)
    {
        osg::Matrixf const view(*mView);
        putMatrix(block, kViewSlot, view);
        putMatrix(block, kViewInverseSlot, osg::Matrixf::inverse(view));
    }
    putMatrix(block, kViewProjectionSlot, osg::Matrixf(*mView * *mProjection));
    if (projectionChanged)
        putMatrix(block, kProjectionSlot, osg::Matrixf(*mProjection));
    unsigned int const first = viewChanged ? kViewSlot : kViewProjectionSlot;
    unsigned int const last = projectionChanged ? kProjectionSlot : kViewProjectionSlot;
    write(*buffer, *mCameraArray, first * kMatrixBytes, (last - first + 1) * kMatrixBytes,
          block + first * kMatrixFloats);
    mCameraStale = false;
    mProjectionDirty = false;
}

void CKVOSGState::write(osg::GLBufferObject& buffer, osg::FloatArray const& array, unsigned int firstByte,
                        unsigned int byteCount, float const* data)
{
    // Arrays too short for a part are left alone rather than overrun.
    if (firstByte + byteCount > array.getTotalDataSize())
        return;
    writeUniformBuffer(buffer, buffer.getOffset(array.getBufferIndex()) + firstByte, byteCount, data);
}

void CKVOSGState::writeUniformBuffer(osg::GLBufferObject& buffer, GLintptr offset, GLsizeiptr size,
                                     void const* data)
{
    osg::GLExtensions* gl = buffer._extensions;
    gl->glBindBuffer(GL_UNIFORM_BUFFER, buffer.getGLObjectID());
    gl->glBufferSubData(GL_UNIFORM_BUFFER, offset, size, data);
    gl->glBindBuffer(GL_UNIFORM_BUFFER, 0);
}

} // namespace Kelvor
