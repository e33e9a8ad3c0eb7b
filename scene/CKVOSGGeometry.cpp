#include "scene/CKVOSGGeometry.h"

#include "picking/CKVInstanceSearch.h"
#include "programs/CKVRenderStateManager.h"
#include "scene/CKVBufferGeometryImp.h"
#include "scene/CKVOSGMultiDrawElementsIndirectUInt.h"
#include "scene/CKVVertexBufferAttributeImp.h"
#include "scene/CKVVertexIndexImp.h"
#include "viewer/CKVOSGVertexArrayState.h"

#include "TarnwickGeometry/KVMatrixConvert.h"

#include <osg/BufferObject>
#include <osg/Camera>
#include <osg/GLExtensions>
#include <osg/Notify>
#include <osg/RenderInfo>
#include <osg/State>

#include <stdexcept>

namespace Kelvor {

char const* const CKVOSGGeometry::s_className = "CKVOSGGeometry";

namespace {

// The pass in which instanced geometry runs the culling program instead of
// drawing; all other passes draw.
char const* const kOcclusionCameraName = "OcclusionCamera";

// Every deep-copy flag: the culling input must share nothing with the rows
// it is copied from.
constexpr unsigned int kDeepCopyAll = 0x7fffffff;

// Byte offset of instanceCount in a glMultiDrawElementsIndirect command.
constexpr GLintptr kInstanceCountOffset = 4;

// Storage bindings of the culling program: it reads the copies and writes
// the survivors over the rows that the draw reads.
constexpr GLuint kCullingInputBinding = 0;
constexpr GLuint kCullingOutputBinding = 1;
// Uniform locations of the culling program.
constexpr GLint kInstanceCountLocation = 0;
constexpr GLint kBoxCentreLocation = 1;
constexpr GLint kBoxExtentLocation = 2;

osg::Array* arrayOf(CKVBufferGeometry& host, CKVVertexBufferAttribute::Name name)
{
    CKVVertexBufferAttribute* attribute = host.getVertexBufferAttribute(name);
    if (!attribute || !attribute->isKindOf(CKVVertexBufferAttributeImp::desc()))
        return nullptr;
    return static_cast<CKVVertexBufferAttributeImp*>(attribute)->getOSGArray();
}

CKVOSGMultiDrawElementsIndirectUInt* primitiveSetOf(CKVVertexIndex* index)
{
    if (!index || !index->isKindOf(CKVVertexIndexImp::desc()))
        return nullptr;
    return static_cast<CKVVertexIndexImp*>(index)->getPrimitiveSet();
}

// The buffer object already given to another of `rows`, so that all of them
// end up one after the other in one buffer.
osg::BufferObject* sharedBufferObject(osg::ref_ptr<osg::Array> const (&rows)[CKVOSGGeometry::kInstanceRowCount],
                                      unsigned int except)
{
    for (unsigned int r = 0; r < CKVOSGGeometry::kInstanceRowCount; ++r)
    {
        if (r != except && rows[r].valid() && rows[r]->getBufferObject())
            return rows[r]->getBufferObject();
    }
    return nullptr;
}

bool isDirtyInContext(osg::Array const* array, unsigned int contextID)
{
    if (!array || !array->getBufferObject())
        return false;
    osg::GLBufferObject const* buffer = array->getBufferObject()->getGLBufferObject(contextID);
    return buffer && buffer->isDirty();
}

} // namespace

CKVOSGGeometry::CKVOSGGeometry(CKVBufferGeometry* host)
    : mHost(host)
    , mOcclusionApplied(CKVRenderStateManager::instance().isOcclusionCulling())
{
    setUseVertexBufferObjects(true);
    setUseVertexArrayObject(true);
}

CKVOSGGeometry::CKVOSGGeometry(CKVOSGGeometry const& other, osg::CopyOp const& copyop)
    : osg::Geometry(other, copyop)
    , mHost(nullptr)
    , mOcclusionApplied(other.mOcclusionApplied)
{
    for (unsigned int r = 0; r < kInstanceRowCount; ++r)
    {
        mInstanceRows[r] = copyop(other.mInstanceRows[r].get());
        mInstanceRowCopies[r] = copyop(other.mInstanceRowCopies[r].get());
    }
}

CKVOSGGeometry::~CKVOSGGeometry() = default;

osg::Object* CKVOSGGeometry::cloneType() const
{
    return new CKVOSGGeometry();
}

osg::Object* CKVOSGGeometry::clone(osg::CopyOp const& copyop) const
{
    return new CKVOSGGeometry(*this, copyop);
}

bool CKVOSGGeometry::isSameKindAs(osg::Object const* object) const
{
    return object && object->className() == s_className;
}

char const* CKVOSGGeometry::libraryName() const
{
    return "kvosg";
}

char const* CKVOSGGeometry::className() const
{
    return s_className;
}

void CKVOSGGeometry::accept(osg::NodeVisitor& visitor)
{
    osg::Geometry::accept(visitor);
}

void CKVOSGGeometry::clearHostGeometry()
{
    mHost = nullptr;
    dirtyBound();
}

namespace {

osg::BoundingBox toOsgBox(CKVBndBox const& box)
{
    CKVPoint3D const& low = box.minPt();
    CKVPoint3D const& high = box.maxPt();
    return osg::BoundingBox(static_cast<float>(low.x), static_cast<float>(low.y), static_cast<float>(low.z),
                            static_cast<float>(high.x), static_cast<float>(high.y), static_cast<float>(high.z));
}

} // namespace

osg::BoundingBox CKVOSGGeometry::computeBoundingBox() const
{
    if (!mHost)
        return osg::Drawable::computeBoundingBox();
    CKVBndBox const box = mHost->getInstanceBnundingBox();
    return box.valid() ? toOsgBox(box) : osg::BoundingBox();
}

osg::BoundingBox CKVOSGGeometry::getVertexBound() const
{
    return mHost ? toOsgBox(mHost->getVertexBoundingBox()) : getBoundingBox();
}

void CKVOSGGeometry::rebuild()
{
    if (!mHost || !mHost->isKindOf(CKVBufferGeometryImp::desc()))
        return;
    CKVBufferGeometry& host = *mHost;

    setVertexArray(arrayOf(host, CKVVertexBufferAttribute::kVertex));
    setNormalArray(arrayOf(host, CKVVertexBufferAttribute::kNormal), osg::Array::BIND_PER_VERTEX);
    setTexCoordArray(0, arrayOf(host, CKVVertexBufferAttribute::kTexCoord), osg::Array::BIND_PER_VERTEX);
    // Attached but left unbound: the draw only sends per-vertex colours, and
    // no surface shader reads one.
    setColorArray(arrayOf(host, CKVVertexBufferAttribute::kColor));

    for (unsigned int r = 0; r < kInstanceRowCount; ++r)
    {
        mInstanceRows[r] = nullptr;
        mInstanceRowCopies[r] = nullptr;
    }
    setInstanceMatrixR1(arrayOf(host, CKVVertexBufferAttribute::kInstanceMatrixR1));
    setInstanceMatrixR2(arrayOf(host, CKVVertexBufferAttribute::kInstanceMatrixR2));
    setInstanceMatrixR3(arrayOf(host, CKVVertexBufferAttribute::kInstanceMatrixR3));
    setInstanceMatrixR4(arrayOf(host, CKVVertexBufferAttribute::kInstanceMatrixR4));

    if (getNumPrimitiveSets() > 0)
        removePrimitiveSet(0, getNumPrimitiveSets());
    if (CKVOSGMultiDrawElementsIndirectUInt* primitiveSet = primitiveSetOf(host.getVertexIndex()))
        addPrimitiveSet(primitiveSet);
    static_cast<CKVBufferGeometryImp&>(host).instanceSearch().prepare(*this);
}

void CKVOSGGeometry::setInstanceMatrixRow(unsigned int row, osg::Array* array)
{
    dirtyBound();
    dirtyGLObjects();
    if (!array)
        return;

    mInstanceRows[row] = array;
    // Per primitive set is no binding the stock geometry gives to arrays of
    // its own, so it marks an instance row.
    array->setBinding(osg::Array::BIND_PER_PRIMITIVE_SET);
    osg::BufferObject* rows = sharedBufferObject(mInstanceRows, row);
    if (!rows)
        rows = new osg::VertexBufferObject;
    array->setBufferObject(rows);

    if (mOcclusionApplied)
        makeInstanceRowCopy(row);
}

void CKVOSGGeometry::makeInstanceRowCopy(unsigned int row) const
{
    osg::Array* array = mInstanceRows[row].get();
    if (!array)
        return;
    // The culling pass writes the rows on the GPU and reads the copies.
    if (osg::BufferObject* rows = array->getBufferObject())
        rows->setUsage(GL_DYNAMIC_COPY);
    osg::ref_ptr<osg::Array> copy = static_cast<osg::Array*>(array->clone(osg::CopyOp(kDeepCopyAll)));
    copy->setBinding(osg::Array::BIND_PER_PRIMITIVE_SET);
    osg::BufferObject* copies = sharedBufferObject(mInstanceRowCopies, row);
    if (!copies)
        copies = new osg::VertexBufferObject;
    copy->setBufferObject(copies);
    mInstanceRowCopies[row] = copy;
}

osg::Array* CKVOSGGeometry::getInstanceMatrixRow(unsigned int row) const
{
    return row < kInstanceRowCount ? mInstanceRows[row].get() : nullptr;
}

osg::Array* CKVOSGGeometry::getInstanceMatrixRowCopy(unsigned int row) const
{
    return row < kInstanceRowCount ? mInstanceRowCopies[row].get() : nullptr;
}

bool CKVOSGGeometry::getInstanceMatrices(std::vector<osg::Matrixd>& matrices) const
{
    matrices.clear();
    osg::Vec4Array const* rows[kInstanceRowCount] = {};
    for (unsigned int r = 0; r < kInstanceRowCount; ++r)
    {
        osg::Array const* row = mInstanceRows[r].get();
        if (!row || row->getType() != osg::Array::Vec4ArrayType)
            return false;
        rows[r] = static_cast<osg::Vec4Array const*>(row);
    }

    std::size_t const count = rows[0]->size();
    for (unsigned int r = 1; r < kInstanceRowCount; ++r)
    {
        if (rows[r]->size() < count)
            throw std::out_of_range("invalid vector<T> subscript");
    }
    matrices.reserve(count);
    for (std::size_t i = 0; i < count; ++i)
    {
        osg::Vec4 const& r1 = (*rows[0])[i];
        osg::Vec4 const& r2 = (*rows[1])[i];
        osg::Vec4 const& r3 = (*rows[2])[i];
        osg::Vec4 const& r4 = (*rows[3])[i];
        matrices.emplace_back(r1.x(), r1.y(), r1.z(), r1.w(), r2.x(), r2.y(), r2.z(), r2.w(),
                              r3.x(), r3.y(), r3.z(), r3.w(), r4.x(), r4.y(), r4.z(), r4.w());
    }
    return !matrices.empty();
}

bool CKVOSGGeometry::getInstanceMatrices(std::vector<CKVMatrix3D>& matrices) const
{
    matrices.clear();
    std::vector<osg::Matrixd> rows;
    if (!getInstanceMatrices(rows))
        return false;
    matrices.reserve(rows.size());
    for (osg::Matrixd const& m : rows)
        matrices.push_back(fromOsgMatrix(m));
    return true;
}

osg::VertexArrayState* CKVOSGGeometry::createVertexArrayStateImplementation(osg::RenderInfo& renderInfo) const
{
    CKVOSGVertexArrayState* vas = CKVOSGVertexArrayState::create(*renderInfo.getState(), *this);
    for (unsigned int r = 0; r < kInstanceRowCount; ++r)
    {
        if (mInstanceRows[r].valid())
            vas->assignInstanceRowDispatcher(r);
    }
    return vas;
}

CKVOSGVertexArrayState* CKVOSGGeometry::currentKVVertexArrayState(osg::State& state) const
{
    // Ours are exactly the ones this geometry made for its contexts; the
    // state's shared one, used without vertex array objects, is stock.
    osg::VertexArrayState* current = state.getCurrentVertexArrayState();
    if (!current || _vertexArrayStateList[state.getContextID()].get() != current)
        return nullptr;
    return static_cast<CKVOSGVertexArrayState*>(current);
}

bool CKVOSGGeometry::arraysChanged(unsigned int contextID) const
{
    if (isDirtyInContext(_vertexArray.get(), contextID) || isDirtyInContext(_normalArray.get(), contextID))
        return true;
    for (osg::ref_ptr<osg::Array> const& array : _texCoordList)
    {
        if (isDirtyInContext(array.get(), contextID))
            return true;
    }
    // The rows share one buffer object.
    return isDirtyInContext(mInstanceRows[0].get(), contextID);
}

void CKVOSGGeometry::drawImplementation(osg::RenderInfo& renderInfo) const
{
    CKVBufferGeometry* host = mHost;
    if (!host)
        return;
    if (!host->validRendering())
    {
        keepVertexArrayObjectComplete(renderInfo);
        return;
    }
    if (_containsDeprecatedData)
    {
        OSG_WARN << "Geometry::drawImplementation() unable to render due to deprecated data, call "
                    "geometry->fixDeprecatedData();"
                 << std::endl;
        return;
    }

    osg::State& state = *renderInfo.getState();
    bool const usingVertexBufferObjects = state.useVertexBufferObject(_supportsVertexBufferObjects && _useVertexBufferObjects);
    bool const usingVertexArrayObjects = usingVertexBufferObjects && state.useVertexArrayObject(_useVertexArrayObject);
    osg::VertexArrayState* vas = state.getCurrentVertexArrayState();
    vas->setVertexBufferObjectSupported(usingVertexBufferObjects);

    bool const checkForGLErrors = state.getCheckForGLErrors() == osg::State::ONCE_PER_ATTRIBUTE;
    if (checkForGLErrors)
        state.checkGLErrors("start of CKVOSGGeometry::drawImplementation()");

    if (CKVRenderStateManager::instance().isOcclusionCulling())
    {
        mOcclusionApplied = true;
        osg::Camera const* camera = renderInfo.getCurrentCamera();
        if (camera && camera->getName() == kOcclusionCameraName)
        {
            dispatchCulling(renderInfo);
            keepVertexArrayObjectComplete(renderInfo);
            return;
        }
    }
    else if (mOcclusionApplied)
    {
        restoreInstances(state);
        mOcclusionApplied = false;
    }

    // The vertex array object keeps arrays bound, so a host write into an
    // array would otherwise never reach the GPU.
    if (usingVertexArrayObjects && arraysChanged(state.getContextID()))
        vas->setRequiresSetArrays(true);

    drawKVVertexArraysImplementation(renderInfo);
    if (checkForGLErrors)
        state.checkGLErrors("CKVOSGGeometry::drawKVVertexArraysImplementation() after vertex arrays setup.");

    osg::AttributeDispatchers& attributeDispatchers = state.getAttributeDispatchers();
    bool const bindPerPrimitiveSetActive = attributeDispatchers.active();
    for (unsigned int i = 0; i < _primitives.size(); ++i)
    {
        if (bindPerPrimitiveSetActive)
            attributeDispatchers.dispatch(i);
        _primitives[i]->draw(state, usingVertexBufferObjects);
    }

    if (usingVertexBufferObjects && !usingVertexArrayObjects)
    {
        vas->unbindVertexBufferObject();
        vas->unbindElementBufferObject();
    }
    if (checkForGLErrors)
        state.checkGLErrors("end of CKVOSGGeometry::drawImplementation().");
}

void CKVOSGGeometry::keepVertexArrayObjectComplete(osg::RenderInfo& renderInfo) const
{
    // Drawable::draw takes the vertex array object for complete after every
    // call, drawn or not; were its arrays left unset here, no later pass
    // would set them.
    osg::State& state = *renderInfo.getState();
    if (state.useVertexArrayObject(_useVertexArrayObject))
        drawKVVertexArraysImplementation(renderInfo);
}

void CKVOSGGeometry::drawKVVertexArraysImplementation(osg::RenderInfo& renderInfo) const
{
    osg::State& state = *renderInfo.getState();
    osg::VertexArrayState* vas = state.getCurrentVertexArrayState();

    osg::AttributeDispatchers& attributeDispatchers = state.getAttributeDispatchers();
    attributeDispatchers.reset();
    attributeDispatchers.setUseVertexAttribAlias(state.getUseVertexAttributeAliasing());
    attributeDispatchers.activateNormalArray(_normalArray.get());
    attributeDispatchers.activateColorArray(_colorArray.get());

    // In the ordinary frame the vertex array object holds everything.
    if (state.useVertexArrayObject(_useVertexArrayObject) && !vas->getRequiresSetArrays())
        return;

    vas->lazyDisablingOfVertexAttributes();

    bool const normalPerVertex = _normalArray.valid() && _normalArray->getBinding() == osg::Array::BIND_PER_VERTEX;
    bool const colorPerVertex = _colorArray.valid() && _colorArray->getBinding() == osg::Array::BIND_PER_VERTEX;
    if (CKVOSGVertexArrayState* kvas = currentKVVertexArrayState(state))
    {
        // A rebuild may have brought arrays that the state had no dispatch
        // for when it was made; assigning is a no-op for existing ones.
        if (_vertexArray.valid())
        {
            kvas->assignVertexArrayDispatcher();
            kvas->setVertexArray(state, _vertexArray.get());
        }
        if (normalPerVertex)
        {
            kvas->assignNormalArrayDispatcher();
            kvas->setNormalArray(state, _normalArray.get());
        }
        if (colorPerVertex)
        {
            kvas->assignColorArrayDispatcher();
            kvas->setColorArray(state, _colorArray.get());
        }
        if (!_texCoordList.empty())
            kvas->assignTexCoordArrayDispatcher(static_cast<unsigned int>(_texCoordList.size()));
        for (unsigned int unit = 0; unit < _texCoordList.size(); ++unit)
        {
            if (_texCoordList[unit].valid())
                kvas->setTexCoordArray(state, unit, _texCoordList[unit].get());
        }
        for (unsigned int r = 0; r < kInstanceRowCount; ++r)
        {
            osg::Array const* row = mInstanceRows[r].get();
            if (row && row->getBinding() == osg::Array::BIND_PER_PRIMITIVE_SET)
            {
                kvas->assignInstanceRowDispatcher(r);
                kvas->setInstanceRowArray(state, r, row);
            }
        }
    }
    else
    {
        // The state's shared vertex array state (no vertex array objects)
        // has no instance rows: such a context draws the shape only.
        if (_vertexArray.valid())
            vas->setVertexArray(state, _vertexArray.get());
        if (normalPerVertex)
            vas->setNormalArray(state, _normalArray.get());
        if (colorPerVertex)
            vas->setColorArray(state, _colorArray.get());
        for (unsigned int unit = 0; unit < _texCoordList.size(); ++unit)
        {
            if (_texCoordList[unit].valid())
                vas->setTexCoordArray(state, unit, _texCoordList[unit].get());
        }
    }

    if (!_primitives.empty())
    {
        osg::DrawElements const* elements = _primitives.front()->getDrawElements();
        osg::GLBufferObject* ebo = elements ? elements->getOrCreateGLBufferObject(state.getContextID()) : nullptr;
        if (ebo)
            vas->bindElementBufferObject(ebo);
    }
    vas->applyDisablingOfVertexAttributes(state);
}

void CKVOSGGeometry::dispatchCulling(osg::RenderInfo& renderInfo) const
{
    CKVVertexIndex* index = mHost->getVertexIndex();
    unsigned int const count = index ? index->getNumInstance() : 0u;
    // Geometry that is not instanced takes no part in culling.
    if (count == 0)
        return;
    // Rows installed while culling was off have no copies yet: culling
    // switched on later makes them from the CPU rows, which it never touches.
    if (!mInstanceRowCopies[0].valid())
    {
        for (unsigned int r = 0; r < kInstanceRowCount; ++r)
            makeInstanceRowCopy(r);
    }
    osg::BufferObject* input = mInstanceRowCopies[0].valid() ? mInstanceRowCopies[0]->getBufferObject() : nullptr;
    osg::BufferObject* output = mInstanceRows[0].valid() ? mInstanceRows[0]->getBufferObject() : nullptr;
    CKVOSGMultiDrawElementsIndirectUInt const* primitiveSet = primitiveSetOf(index);
    osg::IndirectCommandDrawElements const* commands =
        primitiveSet ? primitiveSet->getIndirectCommandArray() : nullptr;
    if (!input || !output || !commands || commands->getNumElements() == 0 || !commands->getBufferObject())
        return;
    CKVBndBox const box = mHost->getVertexBoundingBox();
    if (!box.valid())
        return;

    osg::State& state = *renderInfo.getState();
    unsigned int const contextID = state.getContextID();
    osg::GLExtensions* gl = state.get<osg::GLExtensions>();

    CKVPoint3D const centre = box.midPt();
    CKVVector3D const extent = box.maxPt() - centre;
    gl->glUniform1ui(kInstanceCountLocation, count);
    gl->glUniform3f(kBoxCentreLocation, static_cast<GLfloat>(centre.x), static_cast<GLfloat>(centre.y),
                    static_cast<GLfloat>(centre.z));
    gl->glUniform3f(kBoxExtentLocation, static_cast<GLfloat>(extent.x), static_cast<GLfloat>(extent.y),
                    static_cast<GLfloat>(extent.z));

    // Only the first command is counted: instanced geometry has one segment.
    osg::GLBufferObject* commandBuffer = commands->getBufferObject()->getOrCreateGLBufferObject(contextID);
    state.bindDrawIndirectBufferObject(commandBuffer);
    GLintptr const instanceCountAt =
        static_cast<GLintptr>(commandBuffer->getOffset(commands->getBufferIndex())) + kInstanceCountOffset;
    GLuint const zero = 0;
    gl->glBufferSubData(GL_DRAW_INDIRECT_BUFFER, instanceCountAt, sizeof(zero), &zero);
    // The program counts the survivors straight into the command.
    gl->glBindBufferRange(GL_ATOMIC_COUNTER_BUFFER, 0, commandBuffer->getGLObjectID(), instanceCountAt, sizeof(GLuint));

    osg::VertexArrayState* vas = state.getCurrentVertexArrayState();
    auto compiled = [&](osg::BufferObject* buffer) {
        osg::GLBufferObject* glBuffer = buffer->getOrCreateGLBufferObject(contextID);
        if (glBuffer->isDirty())
        {
            // Compiling binds the array buffer behind the vertex array
            // state's back; leave it unbound and tell the state so.
            glBuffer->compileBuffer();
            gl->glBindBuffer(GL_ARRAY_BUFFER_ARB, 0);
            vas->setCurrentVertexBufferObject(nullptr);
        }
        return glBuffer->getGLObjectID();
    };
    gl->glBindBufferBase(GL_SHADER_STORAGE_BUFFER, kCullingInputBinding, compiled(input));
    gl->glBindBufferBase(GL_SHADER_STORAGE_BUFFER, kCullingOutputBinding, compiled(output));

    gl->glDispatchCompute((count + kCullingGroupSize - 1) / kCullingGroupSize, 1, 1);
}

void CKVOSGGeometry::restoreInstances(osg::State& state) const
{
    CKVVertexIndex* index = mHost->getVertexIndex();
    unsigned int const count = index ? index->getNumInstance() : 0u;
    if (count == 0)
        return;

    CKVOSGMultiDrawElementsIndirectUInt const* primitiveSet = primitiveSetOf(index);
    osg::IndirectCommandDrawElements const* commands =
        primitiveSet ? primitiveSet->getIndirectCommandArray() : nullptr;
    if (commands && commands->getNumElements() > 0 && commands->getBufferObject())
    {
        osg::GLBufferObject* commandBuffer =
            commands->getBufferObject()->getOrCreateGLBufferObject(state.getContextID());
        state.bindDrawIndirectBufferObject(commandBuffer);
        GLintptr const instanceCountAt =
            static_cast<GLintptr>(commandBuffer->getOffset(commands->getBufferIndex())) + kInstanceCountOffset;
        GLuint const full = count;
        state.get<osg::GLExtensions>()->glBufferSubData(GL_DRAW_INDIRECT_BUFFER, instanceCountAt, sizeof(full), &full);
    }

    // Uploading the rows' CPU contents again puts back what culling compacted.
    state.getCurrentVertexArrayState()->setRequiresSetArrays(true);
    for (osg::ref_ptr<osg::Array> const& row : mInstanceRows)
    {
        if (row.valid())
            row->dirty();
    }
}

void CKVOSGGeometry::resizeGLObjectBuffers(unsigned int maxSize)
{
    osg::Geometry::resizeGLObjectBuffers(maxSize);
    for (unsigned int r = 0; r < kInstanceRowCount; ++r)
    {
        if (mInstanceRows[r].valid())
            mInstanceRows[r]->resizeGLObjectBuffers(maxSize);
        if (mInstanceRowCopies[r].valid())
            mInstanceRowCopies[r]->resizeGLObjectBuffers(maxSize);
    }
}

void CKVOSGGeometry::releaseGLObjects(osg::State* state) const
{
    osg::Geometry::releaseGLObjects(state);
    for (unsigned int r = 0; r < kInstanceRowCount; ++r)
    {
        if (mInstanceRows[r].valid())
            mInstanceRows[r]->releaseGLObjects(state);
        if (mInstanceRowCopies[r].valid())
            mInstanceRowCopies[r]->releaseGLObjects(state);
    }
}

} // namespace Kelvor
