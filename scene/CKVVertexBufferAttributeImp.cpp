#include "scene/CKVVertexBufferAttributeImp.h"

#include <algorithm>
#include <new>

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS_DYNAMIC(CKVVertexBufferAttributeImp, CKVVertexBufferAttribute)

namespace {

osg::Array* makeArray(unsigned int elementSize)
{
    osg::Array* array = nullptr;
    switch (elementSize)
    {
    case 2:
        array = new osg::Vec2Array;
        break;
    case 3:
        array = new osg::Vec3Array;
        break;
    case 4:
        array = new osg::Vec4Array;
        break;
    default:
        return nullptr;
    }
    array->setBinding(osg::Array::BIND_UNDEFINED);
    return array;
}

} // namespace

CKVVertexBufferAttribute* createVertexBufferAttributeImp(CKVVertexBufferAttribute::Name name)
{
    // The host takes null for an allocation that failed; its members
    // allocate too, so std::nothrow alone would not do.
    try {
        return new CKVVertexBufferAttributeImp(name);
    } catch (std::bad_alloc const&) {
        return nullptr;
    }
}

CKVVertexBufferAttributeImp::CKVVertexBufferAttributeImp(Name name)
    : CKVVertexBufferAttribute(name)
    , mArray(makeArray(getNumElementPerAttribute()))
{
}

CKVVertexBufferAttributeImp::~CKVVertexBufferAttributeImp() = default;

float* CKVVertexBufferAttributeImp::floats()
{
    // The Vec arrays hold their floats contiguously, element after element.
    return static_cast<float*>(const_cast<GLvoid*>(mArray->getDataPointer()));
}

bool CKVVertexBufferAttributeImp::setData(float const* data, unsigned int count)
{
    unsigned int const n = getNumElementPerAttribute();
    if (!mArray.valid() || !data || count == 0)
        return false;
    count -= count % n;
    if (count == 0)
        return false;
    if (getDataSize() != count)
        mArray->resizeArray(count / n);
    std::copy(data, data + count, floats());
    mArray->dirty();
    return true;
}

bool CKVVertexBufferAttributeImp::updateData(unsigned int offset, float const* data, unsigned int count)
{
    unsigned int const size = getDataSize();
    if (!mArray.valid() || !data || count == 0 || size == 0)
        return false;
    // Compared as a subtraction so that offset + count cannot wrap.
    if (offset > size || count > size - offset)
        return false;
    std::copy(data, data + count, floats() + offset);
    mArray->dirty();
    return true;
}

float* CKVVertexBufferAttributeImp::resizeData(unsigned int count)
{
    unsigned int const n = getNumElementPerAttribute();
    if (!mArray.valid() || n == 0)
        return nullptr;
    count -= count % n;
    if (count == 0)
        return nullptr;
    if (getDataSize() != count)
        mArray->resizeArray(count / n);
    // Marked before the caller writes: the upload happens at the next draw,
    // after the writes, on the thread that packs.
    mArray->dirty();
    return floats();
}

void* CKVVertexBufferAttributeImp::getData()
{
    if (!mArray.valid() || mArray->getNumElements() == 0)
        return nullptr;
    return floats();
}

unsigned int CKVVertexBufferAttributeImp::getDataSize() const
{
    return mArray.valid() ? mArray->getNumElements() * getNumElementPerAttribute() : 0u;
}

} // namespace Kelvor
