#pragma once

#include <atomic>

namespace Kelvor {

// An atomic counter, starting at 0. Increments and decrements return the new
// value, so a counter can serve as a one-shot flag between threads.
class CKVAtomic
{
public:
    CKVAtomic() = default;
    ~CKVAtomic() = default;

    CKVAtomic(CKVAtomic const&) = delete;
    CKVAtomic& operator=(CKVAtomic const&) = delete;

    unsigned int inCrease() { return mValue.fetch_add(1, std::memory_order_acq_rel) + 1; }
    // Wraps below 0 like any unsigned arithmetic.
    unsigned int deCrease() { return mValue.fetch_sub(1, std::memory_order_acq_rel) - 1; }
    unsigned int getValue() const { return mValue.load(std::memory_order_acquire); }
    void setValue(unsigned int value) { mValue.store(value, std::memory_order_release); }

private:
    std::atomic<unsigned int> mValue{0};
};

} // namespace Kelvor
