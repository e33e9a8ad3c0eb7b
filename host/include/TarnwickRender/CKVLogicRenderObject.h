#pragma once

#include "TarnwickCommon/CKVSharedObject.h"
#include "TarnwickCommon/kv_shared_ptr.h"
#include "TarnwickRender/CKVDrawable.h"

namespace Kelvor {

// The part of a render object that belongs to one drawable. A render object
// may pack many of them (see CKVLogicBufferGeometry); picking maps a hit back
// to one and reports its drawable.
class CKVLogicRenderObject : public CKVSharedObject
{
    KV_DECLARE_RUNTIME_CLASS(CKVLogicRenderObject)
public:
    CKVLogicRenderObject() = default;
    explicit CKVLogicRenderObject(CKVDrawable* drawable) : mDrawable(drawable) {}
    ~CKVLogicRenderObject() override;

    CKVDrawable const* getDrawable() const { return mDrawable.get(); }
    CKVDrawable* getDrawable() { return mDrawable.get(); }
    void setDrawable(CKVDrawable* drawable) { mDrawable = drawable; }

private:
    kv_shared_ptr<CKVDrawable> mDrawable;
};

} // namespace Kelvor
