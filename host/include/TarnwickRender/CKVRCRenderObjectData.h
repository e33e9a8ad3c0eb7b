#pragma once

#include "TarnwickCommon/kv_shared_ptr.h"

namespace Kelvor {

class CKVRenderObject;

// The render object a command carries, kept alive until it is dispatched.
class CKVRCRenderObjectData
{
public:
    CKVRenderObject* getRenderObject() const { return mRenderObject.get(); }

protected:
    explicit CKVRCRenderObjectData(CKVRenderObject* object);
    ~CKVRCRenderObjectData();

    CKVRCRenderObjectData(CKVRCRenderObjectData const&) = delete;
    CKVRCRenderObjectData& operator=(CKVRCRenderObjectData const&) = delete;

private:
    kv_shared_ptr<CKVRenderObject> mRenderObject;
};

} // namespace Kelvor
