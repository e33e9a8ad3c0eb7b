#include "TarnwickStream/CKVRenderLOD.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS_DYNAMIC(CKVRenderLOD, CKVSharedObject)

// A new level is always in range: shown from distance 0 without end.
CKVRenderLOD::CKVRenderLOD()
    : mCullingChild(false), mMinDistance(0.0f), mMaxDistance(3.402823466e+38f), mLoadMode(kNone)
{
}

CKVRenderLOD::~CKVRenderLOD() = default;

bool CKVRenderLOD::addChildLOD(CKVRenderLOD* child)
{
    if (!child || child == this)
        return false;
    mChildren.emplace_back(child);
    return true;
}

CKVRenderLOD* CKVRenderLOD::getChildLOD(unsigned int index) const
{
    return index < mChildren.size() ? mChildren[index].get() : nullptr;
}

bool CKVRenderLOD::addGeometry(CKVBasicMaterial const* material, CKVGeometry const* geometry)
{
    if (!geometry)
        return false;
    GeometryEntry entry;
    entry.material = material;
    entry.geometry = geometry;
    mGeometries.push_back(entry);
    return true;
}

void CKVRenderLOD::setLoadDistance(float minimum, float maximum)
{
    mMinDistance = minimum;
    mMaxDistance = maximum;
}

unsigned int CKVRenderLOD::countLODs() const
{
    unsigned int count = 1;
    for (kv_shared_ptr<CKVRenderLOD> const& child : mChildren)
        count += child->countLODs();
    return count;
}

} // namespace Kelvor
