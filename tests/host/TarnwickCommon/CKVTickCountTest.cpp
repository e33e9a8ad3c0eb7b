#include "TarnwickCommon/CKVTickCount.h"
#include "TarnwickCommon/kv_shared_ptr.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <mutex>
#include <set>
#include <thread>

namespace Kelvor {
namespace {

using namespace std::chrono_literals;

// Bounds are loose on purpose: the machines running these tests are shared
// and may stall a thread for tens of milliseconds.

struct Probe
{
    std::atomic<int> calls{0};
    std::atomic<int> inside{0};
    std::atomic<bool> overlapped{false};
    std::atomic<bool> calledAfterStop{false};
    std::atomic<bool> stopped{false};
    std::chrono::milliseconds work{0};
    CKVTickCount* timer = nullptr;
    int stopAtCall = -1;
    std::mutex threadsMutex;
    std::set<std::thread::id> threads;
};

void onTick(void* data)
{
    Probe& probe = *static_cast<Probe*>(data);
    if (probe.inside.fetch_add(1) != 0)
        probe.overlapped = true;
    if (probe.stopped)
        probe.calledAfterStop = true;
    {
        std::lock_guard<std::mutex> lock(probe.threadsMutex);
        probe.threads.insert(std::this_thread::get_id());
    }
    if (probe.work.count() > 0)
        std::this_thread::sleep_for(probe.work);
    int const call = probe.calls.fetch_add(1) + 1;
    if (call == probe.stopAtCall) {
        EXPECT_TRUE(probe.timer->stop());
    }
    probe.inside.fetch_sub(1);
}

// Waits until `pred` holds, up to `limit`.
template <class Pred>
bool waitFor(Pred pred, std::chrono::milliseconds limit = 5000ms)
{
    auto const end = std::chrono::steady_clock::now() + limit;
    while (!pred()) {
        if (std::chrono::steady_clock::now() > end)
            return false;
        std::this_thread::sleep_for(1ms);
    }
    return true;
}

// A timer that calls onTick with `probe` every `period` milliseconds.
kv_shared_ptr<CKVTickCount> tickingTimer(Probe& probe, unsigned int period)
{
    kv_shared_ptr<CKVTickCount> timer(new CKVTickCount);
    timer->setTimeOut(period);
    timer->setTickCallback(&onTick);
    timer->setUserData(&probe);
    return timer;
}

TEST(CKVTickCount, StartNeedsACallback)
{
    kv_shared_ptr<CKVTickCount> timer(new CKVTickCount);
    EXPECT_FALSE(timer->start());
    EXPECT_FALSE(timer->isRunning());
    EXPECT_TRUE(timer->stop());
}

TEST(CKVTickCount, PeriodIsRoughlyHonoured)
{
    Probe probe;
    kv_shared_ptr<CKVTickCount> timer = tickingTimer(probe, 20);
    auto const begin = std::chrono::steady_clock::now();
    ASSERT_TRUE(timer->start());
    std::this_thread::sleep_for(600ms);
    timer->stop();
    auto const elapsed = std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - begin);

    // Missed periods are dropped, so there can never be more calls than periods.
    EXPECT_LE(probe.calls.load(), elapsed.count() / 20 + 1);
    EXPECT_GE(probe.calls.load(), 5);
}

TEST(CKVTickCount, CallsNeverOverlapWhenTheyOverrunThePeriod)
{
    Probe probe;
    probe.work = 15ms;
    kv_shared_ptr<CKVTickCount> timer = tickingTimer(probe, 2);
    ASSERT_TRUE(timer->start());
    EXPECT_TRUE(timer->start()) << "a second start is harmless";
    ASSERT_TRUE(waitFor([&] { return probe.calls >= 8; }));
    timer->stop();

    EXPECT_FALSE(probe.overlapped);
    EXPECT_EQ(1u, probe.threads.size());
}

TEST(CKVTickCount, NoCallAfterStopReturns)
{
    Probe probe;
    probe.work = 1ms;
    kv_shared_ptr<CKVTickCount> timer = tickingTimer(probe, 1);

    for (int cycle = 0; cycle < 30; ++cycle) {
        probe.stopped = false;
        ASSERT_TRUE(timer->start());
        std::this_thread::sleep_for(std::chrono::milliseconds(cycle % 4));
        timer->stop();
        // A call in progress when stop() began has finished by now.
        EXPECT_EQ(0, probe.inside.load());
        probe.stopped = true;
    }
    int const calls = probe.calls;
    std::this_thread::sleep_for(20ms);
    EXPECT_EQ(calls, probe.calls.load());
    EXPECT_FALSE(probe.calledAfterStop);
    EXPECT_FALSE(probe.overlapped);
    EXPECT_GT(calls, 0);
}

TEST(CKVTickCount, StopFromInsideTheCallbackThenRestart)
{
    Probe probe;
    kv_shared_ptr<CKVTickCount> timer = tickingTimer(probe, 2);
    probe.timer = timer.get();
    probe.stopAtCall = 3;
    ASSERT_TRUE(timer->start());

    ASSERT_TRUE(waitFor([&] { return probe.calls >= 3 && !timer->isRunning(); }));
    std::this_thread::sleep_for(30ms);
    EXPECT_EQ(3, probe.calls.load());

    probe.stopAtCall = -1;
    ASSERT_TRUE(timer->start());
    EXPECT_TRUE(waitFor([&] { return probe.calls >= 6; }));
    timer->stop();
    EXPECT_FALSE(probe.overlapped);
}

struct SelfOwner
{
    kv_shared_ptr<CKVTickCount> timer;
    std::atomic<int> calls{0};
    std::atomic<bool> dropped{false};
};

void dropOwnTimer(void* data)
{
    SelfOwner& owner = *static_cast<SelfOwner*>(data);
    if (owner.calls.fetch_add(1) == 1) {
        owner.timer = nullptr; // last reference: destroys the timer from its own thread
        owner.dropped = true;
    }
}

TEST(CKVTickCount, CanBeDestroyedFromItsOwnCallback)
{
    SelfOwner owner;
    owner.timer = new CKVTickCount;
    owner.timer->setTimeOut(2);
    owner.timer->setTickCallback(&dropOwnTimer);
    owner.timer->setUserData(&owner);
    ASSERT_TRUE(owner.timer->start());

    ASSERT_TRUE(waitFor([&] { return owner.dropped.load(); }));
    std::this_thread::sleep_for(30ms);
    EXPECT_EQ(2, owner.calls.load());
}

TEST(CKVTickCount, DestructorStopsARunningTimer)
{
    Probe probe;
    {
        kv_shared_ptr<CKVTickCount> timer = tickingTimer(probe, 1);
        ASSERT_TRUE(timer->start());
        ASSERT_TRUE(waitFor([&] { return probe.calls >= 2; }));
    }
    int const calls = probe.calls;
    std::this_thread::sleep_for(20ms);
    EXPECT_EQ(calls, probe.calls.load());
}

} // namespace
} // namespace Kelvor
