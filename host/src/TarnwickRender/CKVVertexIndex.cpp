#include "TarnwickRender/CKVVertexIndex.h"

#include <algorithm>

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS(CKVVertexIndex, CKVSharedObject)

CKVVertexIndex::CKVVertexIndex(unsigned int mode) : mMode(mode)
{
}

CKVVertexIndex::~CKVVertexIndex() = default;

unsigned int CKVVertexIndex::getNumIndexPerPrimitive() const
{
    switch (mMode) {
    case kPoints:
        return 1;
    case kLines:
        return 2;
    case kTriangles:
    case kPatches:
        return 3;
    case kQuads:
        return 4;
    default:
        return 0;
    }
}

bool CKVVertexIndex::setData(unsigned int const* data, unsigned int count)
{
    if (!data || count == 0)
        return false;
    mIndices.assign(data, data + count);
    return true;
}

bool CKVVertexIndex::updateData(unsigned int offset, unsigned int const* data, unsigned int count)
{
    if (!data || count == 0 || mIndices.empty())
        return false;
    if (offset > mIndices.size() || count > mIndices.size() - offset)
        return false;
    std::copy(data, data + count, mIndices.begin() + offset);
    return true;
}

void* CKVVertexIndex::getData()
{
    return mIndices.empty() ? nullptr : mIndices.data();
}

unsigned int CKVVertexIndex::getDataSize() const
{
    return static_cast<unsigned int>(mIndices.size());
}

void CKVVertexIndex::setNumInstance(unsigned int count)
{
    mNumInstance = count;
}

unsigned int CKVVertexIndex::getNumInstance() const
{
    return mNumInstance;
}

void CKVVertexIndex::updateDrawRange()
{
    // The backend may keep its own index storage, so the bound comes from
    // the virtual size rather than from the base's vector.
    unsigned int const size = getDataSize();
    std::vector<CKVBufferDataSegment> clamped;
    clamped.reserve(mSegments.size());
    for (CKVBufferDataSegment const& s : mSegments) {
        if (s.getOffset() >= size || s.getCount() == 0)
            continue;
        unsigned int const count = std::min(s.getCount(), size - s.getOffset());
        clamped.emplace_back(s.getOffset(), count);
    }
    std::sort(clamped.begin(), clamped.end(), [](CKVBufferDataSegment const& a, CKVBufferDataSegment const& b) {
        return a.getOffset() < b.getOffset();
    });

    mSegments.clear();
    for (CKVBufferDataSegment const& s : clamped) {
        if (!mSegments.empty() && s.getOffset() <= mSegments.back().getEnd()) {
            CKVBufferDataSegment& last = mSegments.back();
            unsigned int const end = std::max(last.getEnd(), s.getEnd());
            last = CKVBufferDataSegment(last.getOffset(), end - last.getOffset());
        } else {
            mSegments.push_back(s);
        }
    }
}

CKVBufferDataSegment CKVVertexIndex::getSegment(unsigned int index) const
{
    return index < mSegments.size() ? mSegments[index] : CKVBufferDataSegment();
}

} // namespace Kelvor
