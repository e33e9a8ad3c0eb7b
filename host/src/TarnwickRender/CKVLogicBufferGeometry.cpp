#include "TarnwickRender/CKVLogicBufferGeometry.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS_DYNAMIC(CKVLogicBufferGeometry, CKVLogicRenderObject)

CKVLogicBufferGeometry::CKVLogicBufferGeometry() = default;

CKVLogicBufferGeometry::CKVLogicBufferGeometry(CKVDrawable* drawable) : CKVLogicRenderObject(drawable)
{
}

CKVLogicBufferGeometry::~CKVLogicBufferGeometry() = default;

bool CKVLogicBufferGeometry::setInstanceMatrix(CKVMatrix3D const& matrix)
{
    if (getOwner())
        return false;
    mIsInstance = true;
    mInstanceMatrix = matrix;
    mPart.reset();
    return true;
}

bool CKVLogicBufferGeometry::setVertexData(CKVVertexBufferAttribute::Name name, float const* data, unsigned int count)
{
    if (getOwner() || mIsInstance || !data)
        return false;
    if (name >= CKVVertexBufferAttribute::kInstanceMatrixR1 && name <= CKVVertexBufferAttribute::kInstanceMatrixR4)
        return false;
    unsigned int const n = CKVVertexBufferAttribute::elementSize(name);
    if (n == 0)
        return false;
    count -= count % n;
    partData().vertexData[name].assign(data, data + count);
    return true;
}

bool CKVLogicBufferGeometry::setIndexData(unsigned int const* data, unsigned int count)
{
    if (getOwner() || mIsInstance || (!data && count != 0))
        return false;
    if (count == 0 && !mPart)
        return true;
    partData().indices.assign(data, data + count);
    return true;
}

CKVLogicBufferGeometry::PartData& CKVLogicBufferGeometry::partData()
{
    if (!mPart)
        mPart.reset(new PartData);
    return *mPart;
}

std::vector<unsigned int> const& CKVLogicBufferGeometry::getIndexData() const
{
    static std::vector<unsigned int> const empty;
    return mPart ? mPart->indices : empty;
}

std::vector<float> const& CKVLogicBufferGeometry::getVertexData(CKVVertexBufferAttribute::Name name) const
{
    static std::vector<float> const empty;
    return mPart && name < CKVVertexBufferAttribute::kNameCount ? mPart->vertexData[name] : empty;
}

unsigned int CKVLogicBufferGeometry::getNumVertex() const
{
    return mPart ? static_cast<unsigned int>(mPart->vertexData[CKVVertexBufferAttribute::kVertex].size() / 3) : 0u;
}

bool CKVLogicBufferGeometry::claim(CKVBufferGeometry const* owner)
{
    // Two geometries may try to take the same buffer from different threads
    // under different mutexes; only the owner pointer decides between them.
    CKVBufferGeometry const* expected = nullptr;
    return mOwner.compare_exchange_strong(expected, owner, std::memory_order_acq_rel);
}

void CKVLogicBufferGeometry::release(CKVBufferGeometry const* owner)
{
    CKVBufferGeometry const* expected = owner;
    mOwner.compare_exchange_strong(expected, nullptr, std::memory_order_acq_rel);
}

unsigned int CKVLogicBufferGeometry::getBaseVertex() const
{
    return mPart ? mPart->baseVertex : kNotPlaced;
}

CKVBufferDataSegment const& CKVLogicBufferGeometry::getSegment() const
{
    static CKVBufferDataSegment const none;
    return mPart ? mPart->segment : none;
}

void CKVLogicBufferGeometry::placeInstance(unsigned int index)
{
    unplace();
    mInstanceIndex = index;
}

void CKVLogicBufferGeometry::placePart(unsigned int baseVertex, CKVBufferDataSegment const& segment)
{
    mInstanceIndex = kNotPlaced;
    PartData& part = partData();
    part.baseVertex = baseVertex;
    part.segment = segment;
}

void CKVLogicBufferGeometry::unplace()
{
    mInstanceIndex = kNotPlaced;
    if (mPart) {
        mPart->baseVertex = kNotPlaced;
        mPart->segment = CKVBufferDataSegment();
    }
}

} // namespace Kelvor
