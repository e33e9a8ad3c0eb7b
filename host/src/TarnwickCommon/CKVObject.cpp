#include "TarnwickCommon/CKVObject.h"

namespace Kelvor {

CKVObject::~CKVObject() = default;

CKVRuntimeClass const* CKVObject::desc()
{
    static CKVRuntimeClass record("CKVObject", nullptr, nullptr);
    return &record;
}

CKVRuntimeClass const* CKVObject::isA() const
{
    return desc();
}

bool CKVObject::isKindOf(CKVRuntimeClass const* record) const
{
    CKVRuntimeClass const* mine = isA();
    return mine && mine->isDerivedFrom(record);
}

} // namespace Kelvor
