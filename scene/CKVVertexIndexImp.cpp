#include "scene/CKVVertexIndexImp.h"

#include "scene/CKVOSGMultiDrawElementsIndirectUInt.h"

#include <osg/BufferObject>
#include <osg/PrimitiveSet>

#include <algorithm>
#include <new>

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS_DYNAMIC(CKVVertexIndexImp, CKVVertexIndex)

namespace {

bool glModeOf(unsigned int mode, GLenum& glMode)
{
    switch (mode)
    {
    case CKVVertexIndex::kPoints:
        glMode = GL_POINTS;
        return true;
    case CKVVertexIndex::kLines:
        glMode = GL_LINES;
        return true;
    case CKVVertexIndex::kTriangles:
        glMode = GL_TRIANGLES;
        return true;
    case CKVVertexIndex::kQuads:
        glMode = GL_QUADS;
        return true;
    case CKVVertexIndex::kPatches:
        glMode = GL_PATCHES;
        return true;
    default:
        return false;
    }
}

} // namespace

CKVVertexIndex* createVertexIndexImp(unsigned int mode)
{
    // The host takes null for an allocation that failed; its members
    // allocate too, so std::nothrow alone would not do.
    try {
        return new CKVVertexIndexImp(mode);
    } catch (std::bad_alloc const&) {
        return nullptr;
    }
}

CKVVertexIndexImp::CKVVertexIndexImp(unsigned int mode)
    : CKVVertexIndex(mode)
{
    GLenum glMode = 0;
    if (glModeOf(getDrawMode(), glMode))
        mPrimitiveSet = new CKVOSGMultiDrawElementsIndirectUInt(this, glMode);
}

CKVVertexIndexImp::~CKVVertexIndexImp()
{
    // A geometry may keep drawing the set after the host dropped its index.
    if (mPrimitiveSet.valid())
        mPrimitiveSet->clearOwner();
}

bool CKVVertexIndexImp::setData(unsigned int const* data, unsigned int count)
{
    if (!mPrimitiveSet.valid() || !data || count == 0)
        return false;
    if (mPrimitiveSet->size() != count)
        mPrimitiveSet->resize(count, 0u);
    std::copy(data, data + count, mPrimitiveSet->begin());
    return true;
}

bool CKVVertexIndexImp::updateData(unsigned int offset, unsigned int const* data, unsigned int count)
{
    if (!mPrimitiveSet.valid() || !data || count == 0 || mPrimitiveSet->empty())
        return false;
    std::size_t const size = mPrimitiveSet->size();
    // Compared as a subtraction so that offset + count cannot wrap.
    if (offset > size || count > size - offset)
        return false;
    std::copy(data, data + count, mPrimitiveSet->begin() + offset);
    return true;
}

void* CKVVertexIndexImp::getData()
{
    if (!mPrimitiveSet.valid() || mPrimitiveSet->empty())
        return nullptr;
    return &mPrimitiveSet->front();
}

unsigned int CKVVertexIndexImp::getDataSize() const
{
    return mPrimitiveSet.valid() ? static_cast<unsigned int>(mPrimitiveSet->size()) : 0u;
}

void CKVVertexIndexImp::updateDrawRange()
{
    CKVVertexIndex::updateDrawRange();
    if (!mPrimitiveSet.valid())
        return;

    // A fresh array each time: the GPU may have rewritten the old one's
    // instance counts, so it is never patched in place.
    osg::ref_ptr<osg::DefaultIndirectCommandDrawElements> commands = new osg::DefaultIndirectCommandDrawElements;
    commands->setBufferObject(new osg::DrawIndirectBufferObject);
    // Culling writes into the commands on the GPU.
    commands->getBufferObject()->setUsage(GL_DYNAMIC_COPY);

    unsigned int const numInstance = getNumInstance();
    commands->reserve(getNumSegment());
    for (CKVBufferDataSegment const& segment : getSegments())
    {
        osg::DrawElementsIndirectCommand command;
        command.count = segment.getCount();
        command.instanceCount = numInstance != 0 ? numInstance : 1u;
        command.firstIndex = segment.getOffset();
        command.baseVertex = 0;
        command.baseInstance = 0;
        commands->push_back(command);
    }

    mPrimitiveSet->dirty();
    mPrimitiveSet->setIndirectCommandArray(commands.get());
}

} // namespace Kelvor
