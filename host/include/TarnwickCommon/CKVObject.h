#pragma once

#include "TarnwickCommon/CKVRuntimeClass.h"

namespace Kelvor {

// Root of every class that crosses the host boundary. Host objects are
// downcast only after `isKindOf(X::desc())`, never with dynamic_cast.
class CKVObject
{
public:
    virtual ~CKVObject();
    virtual CKVRuntimeClass const* isA() const;
    static CKVRuntimeClass const* desc();

    bool isKindOf(CKVRuntimeClass const* record) const;

protected:
    CKVObject() = default;
    CKVObject(CKVObject const&) = default;
    CKVObject& operator=(CKVObject const&) = default;
};

} // namespace Kelvor
