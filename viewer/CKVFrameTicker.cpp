#include "viewer/CKVFrameTicker.h"

#include "viewer/CKVTickTarget.h"
#include "viewer/KVNoThrow.h"

#include <chrono>

namespace Kelvor {

namespace {

// The frame period of the render loop.
constexpr unsigned int kTickPeriodMs = 20;
// Monotonic ticks are counted in 100 ns units, so 10000 make a millisecond.
constexpr std::int64_t kTicksPerMs = 10000;

} // namespace

CKVFrameTicker::CKVFrameTicker() = default;

CKVFrameTicker::~CKVFrameTicker()
{
    stop();
}

std::int64_t CKVFrameTicker::monotonicTicks()
{
    using Ticks = std::chrono::duration<std::int64_t, std::ratio<1, 10000000>>;
    return std::chrono::duration_cast<Ticks>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

void CKVFrameTicker::start()
{
    if (mTimer.valid())
        return;
    kv_shared_ptr<CKVTickCount> timer = new CKVTickCount;
    timer->setTimeOut(kTickPeriodMs);
    timer->setTickCallback(&CKVFrameTicker::tick);
    timer->setUserData(this);
    // Taken before the timer's thread exists, so no tick sees it unset.
    mStartTicks = monotonicTicks();
    if (timer->start())
        mTimer = timer;
}

void CKVFrameTicker::stop()
{
    if (!mTimer.valid())
        return;
    mTimer->stop();
    mTimer = nullptr;
}

void CKVFrameTicker::tick(void* userData)
{
    if (!userData)
        return;
    auto* ticker = static_cast<CKVFrameTicker*>(userData);
    CKVTickTarget* target = ticker->getTarget();
    if (!target)
        return;
    std::int64_t const elapsed = monotonicTicks() - ticker->mStartTicks;
    // The last guard of the timer thread: a target that throws (a lock
    // that fails, say) loses its tick, not the host its process.
    KVNoThrow::call("render tick", [&] {
        target->onTick(static_cast<unsigned int>(elapsed / kTicksPerMs));
        return true;
    });
}

} // namespace Kelvor
