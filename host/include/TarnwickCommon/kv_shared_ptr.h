#pragma once

#include "TarnwickCommon/CKVSharedObject.h"

#include <cstddef>
#include <utility>

namespace Kelvor {

// The host's smart pointer: one pointer word over a CKVSharedObject
// descendant. Assigning a new value refs it before the old one is released,
// so assigning the current value leaves the count unchanged.
template <class T>
class kv_shared_ptr
{
public:
    kv_shared_ptr() = default;
    kv_shared_ptr(std::nullptr_t) {}
    kv_shared_ptr(T* p) : mPtr(p) { acquire(mPtr); }
    kv_shared_ptr(kv_shared_ptr const& other) : mPtr(other.mPtr) { acquire(mPtr); }
    kv_shared_ptr(kv_shared_ptr&& other) noexcept : mPtr(other.mPtr) { other.mPtr = nullptr; }
    template <class U>
    kv_shared_ptr(kv_shared_ptr<U> const& other) : mPtr(other.get()) { acquire(mPtr); }
    ~kv_shared_ptr() { release(mPtr); }

    kv_shared_ptr& operator=(T* p)
    {
        if (p == mPtr)
            return *this;
        T* old = mPtr;
        mPtr = p;
        acquire(mPtr);
        release(old);
        return *this;
    }
    kv_shared_ptr& operator=(kv_shared_ptr const& other) { return *this = other.mPtr; }
    kv_shared_ptr& operator=(kv_shared_ptr&& other) noexcept
    {
        if (this != &other) {
            T* old = mPtr;
            mPtr = other.mPtr;
            other.mPtr = nullptr;
            release(old);
        }
        return *this;
    }
    template <class U>
    kv_shared_ptr& operator=(kv_shared_ptr<U> const& other) { return *this = static_cast<T*>(other.get()); }

    T* get() const { return mPtr; }
    T* operator->() const { return mPtr; }
    T& operator*() const { return *mPtr; }
    explicit operator bool() const { return mPtr != nullptr; }
    bool valid() const { return mPtr != nullptr; }

    // Gives up the reference without releasing it.
    T* detach()
    {
        T* p = mPtr;
        mPtr = nullptr;
        return p;
    }

    friend bool operator==(kv_shared_ptr const& a, kv_shared_ptr const& b) { return a.mPtr == b.mPtr; }
    friend bool operator!=(kv_shared_ptr const& a, kv_shared_ptr const& b) { return a.mPtr != b.mPtr; }
    friend bool operator==(kv_shared_ptr const& a, T const* b) { return a.mPtr == b; }
    friend bool operator!=(kv_shared_ptr const& a, T const* b) { return a.mPtr != b; }
    friend bool operator<(kv_shared_ptr const& a, kv_shared_ptr const& b) { return a.mPtr < b.mPtr; }

private:
    static void acquire(T* p)
    {
        if (p)
            static_cast<CKVSharedObject const*>(p)->ref();
    }
    static void release(T* p)
    {
        if (p && static_cast<CKVSharedObject const*>(p)->unref() == 0)
            delete p;
    }

    T* mPtr = nullptr;
};

} // namespace Kelvor
