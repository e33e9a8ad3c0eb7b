#pragma once

#include "TarnwickCommon/CKVTickCount.h"
#include "TarnwickCommon/kv_shared_ptr.h"

#include <atomic>
#include <cstdint>

namespace Kelvor {

class CKVTickTarget;

// The 20 ms heartbeat of a render context: a host timer whose every call
// hands the milliseconds since start to the target. Windows own one each.
class CKVFrameTicker
{
public:
    CKVFrameTicker();
    // Stops the timer: a tick must not reach an owner being torn down.
    ~CKVFrameTicker();

    CKVFrameTicker(CKVFrameTicker const&) = delete;
    CKVFrameTicker& operator=(CKVFrameTicker const&) = delete;

    // Not owned; null stops delivering ticks without stopping the timer.
    void setTarget(CKVTickTarget* target) { mTarget.store(target, std::memory_order_release); }
    CKVTickTarget* getTarget() const { return mTarget.load(std::memory_order_acquire); }

    // Does nothing while running; otherwise restarts the clock too.
    void start();
    // No tick arrives after it returns.
    void stop();
    bool isRunning() const { return mTimer.valid(); }

private:
    static void tick(void* userData);
    static std::int64_t monotonicTicks();

    std::atomic<CKVTickTarget*> mTarget{nullptr};
    kv_shared_ptr<CKVTickCount> mTimer;
    // Monotonic clock at start, in 100 ns units.
    std::int64_t mStartTicks = 0;
};

} // namespace Kelvor
