#pragma once

#include "TarnwickCommon/CKVObject.h"

#include <atomic>

namespace Kelvor {

// An object with an intrusive, atomic reference count. `unref` never deletes:
// the holder that saw the count reach 0 deletes through the virtual destructor.
class CKVSharedObject : public CKVObject
{
    KV_DECLARE_RUNTIME_CLASS(CKVSharedObject)
public:
    CKVSharedObject() = default;
    // A copy is a new object: it starts unreferenced.
    CKVSharedObject(CKVSharedObject const&) : CKVObject() {}
    CKVSharedObject& operator=(CKVSharedObject const&) { return *this; }
    ~CKVSharedObject() override = default;

    unsigned int ref() const { return mRefCount.fetch_add(1, std::memory_order_relaxed) + 1; }
    unsigned int unref() const { return mRefCount.fetch_sub(1, std::memory_order_acq_rel) - 1; }
    unsigned int refCount() const { return mRefCount.load(std::memory_order_acquire); }

private:
    mutable std::atomic<unsigned int> mRefCount{0};
};

} // namespace Kelvor
