#include "TarnwickRender/CKVVertexBufferAttribute.h"

#include <algorithm>

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS(CKVVertexBufferAttribute, CKVSharedObject)

CKVVertexBufferAttribute::CKVVertexBufferAttribute(Name name) : mName(name)
{
}

CKVVertexBufferAttribute::~CKVVertexBufferAttribute() = default;

unsigned int CKVVertexBufferAttribute::elementSize(Name name)
{
    switch (name) {
    case kVertex:
    case kNormal:
        return 3;
    case kTexCoord:
        return 2;
    case kInstanceMatrixR1:
    case kInstanceMatrixR2:
    case kInstanceMatrixR3:
    case kInstanceMatrixR4:
    case kColor:
        return 4;
    default:
        return 0;
    }
}

bool CKVVertexBufferAttribute::setData(float const* data, unsigned int count)
{
    unsigned int const n = getNumElementPerAttribute();
    if (!data || n == 0)
        return false;
    count -= count % n;
    if (count == 0)
        return false;
    mData.assign(data, data + count);
    return true;
}

bool CKVVertexBufferAttribute::updateData(unsigned int offset, float const* data, unsigned int count)
{
    if (!data || count == 0 || mData.empty())
        return false;
    // Compared as a subtraction so that offset + count cannot wrap.
    if (offset > mData.size() || count > mData.size() - offset)
        return false;
    std::copy(data, data + count, mData.begin() + offset);
    return true;
}

float* CKVVertexBufferAttribute::resizeData(unsigned int count)
{
    unsigned int const n = getNumElementPerAttribute();
    if (n == 0)
        return nullptr;
    count -= count % n;
    if (count == 0)
        return nullptr;
    mData.resize(count);
    return mData.data();
}

void* CKVVertexBufferAttribute::getData()
{
    return mData.empty() ? nullptr : mData.data();
}

unsigned int CKVVertexBufferAttribute::getDataSize() const
{
    return static_cast<unsigned int>(mData.size());
}

unsigned int CKVVertexBufferAttribute::getNumElement() const
{
    unsigned int const n = getNumElementPerAttribute();
    return n == 0 ? 0 : getDataSize() / n;
}

} // namespace Kelvor
