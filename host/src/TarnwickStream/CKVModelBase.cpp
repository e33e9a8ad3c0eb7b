#include "TarnwickStream/CKVModelBase.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS_DYNAMIC(CKVModelBase, CKVSharedObject)

CKVModelBase::CKVModelBase() = default;

CKVModelBase::~CKVModelBase() = default;

bool CKVModelBase::addLOD(CKVRenderLOD const* lod)
{
    if (!lod)
        return false;
    mLODs.emplace_back(lod);
    return true;
}

CKVRenderLOD const* CKVModelBase::getLOD(unsigned int index) const
{
    return index < mLODs.size() ? mLODs[index].get() : nullptr;
}

} // namespace Kelvor
