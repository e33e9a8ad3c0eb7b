#include "TarnwickCommon/CKVTickCount.h"

#include <chrono>
#include <condition_variable>
#include <system_error>

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS_DYNAMIC(CKVTickCount, CKVSharedObject)

// Everything the timer thread touches lives here, shared between the object
// and the thread, so that the object may be destroyed from inside its own
// callback while the thread finishes on its own.
struct CKVTickCount::State
{
    std::mutex mutex;
    std::condition_variable wake;
    unsigned int periodMs = 20;
    TickCallback callback = nullptr;
    void* userData = nullptr;
    // Set by stop() from inside the callback; start() from inside clears it.
    bool stopRequested = false;
    // Set by stop() from another thread or by the destructor: final for the
    // thread it was set for.
    bool shutdown = false;
    // True while a timer thread runs its loop.
    bool alive = false;
};

namespace {

// The state whose callback this thread is running, to recognise calls made
// from inside the callback.
thread_local void const* tRunningState = nullptr;

} // namespace

CKVTickCount::CKVTickCount() : mState(std::make_shared<State>()) {}

CKVTickCount::~CKVTickCount()
{
    if (onTimerThread()) {
        // Dropped from inside the callback: the thread cannot join itself.
        // It sees the shutdown when the callback returns and ends, keeping
        // the state alive until then. mThread was stored under this mutex.
        std::lock_guard<std::mutex> lock(mState->mutex);
        mState->shutdown = true;
        if (mThread.joinable())
            mThread.detach();
        return;
    }
    stop();
}

bool CKVTickCount::onTimerThread() const
{
    return tRunningState == mState.get();
}

void CKVTickCount::setTimeOut(unsigned int milliseconds)
{
    std::lock_guard<std::mutex> lock(mState->mutex);
    mState->periodMs = milliseconds == 0 ? 1 : milliseconds;
}

unsigned int CKVTickCount::getTimeOut() const
{
    std::lock_guard<std::mutex> lock(mState->mutex);
    return mState->periodMs;
}

void CKVTickCount::setTickCallback(TickCallback callback)
{
    std::lock_guard<std::mutex> lock(mState->mutex);
    mState->callback = callback;
}

void CKVTickCount::setUserData(void* userData)
{
    std::lock_guard<std::mutex> lock(mState->mutex);
    mState->userData = userData;
}

bool CKVTickCount::start()
{
    if (onTimerThread()) {
        // The thread is ours and running; cancel a stop asked for in this callback.
        std::lock_guard<std::mutex> lock(mState->mutex);
        if (!mState->callback)
            return false;
        mState->stopRequested = false;
        return true;
    }

    std::unique_lock<std::mutex> control(mControl);
    {
        std::lock_guard<std::mutex> lock(mState->mutex);
        if (!mState->callback)
            return false;
        if (mState->alive && !mState->shutdown) {
            // Running, or stopped from inside a callback that has not yet
            // returned: keep the same thread going.
            mState->stopRequested = false;
            return true;
        }
    }
    // A thread that stopped itself has left its loop (alive is false), so
    // this join does not wait on a callback.
    if (mThread.joinable())
        mThread.join();
    // The thread is stored under the state mutex, which the new thread takes
    // before its first call, so a callback that destroys this object sees it.
    // For the same reason mControl is released before that mutex: once the
    // thread has the state mutex, this object may be gone.
    std::lock_guard<std::mutex> lock(mState->mutex);
    mState->stopRequested = false;
    mState->shutdown = false;
    try {
        mThread = std::thread(&CKVTickCount::runTimer, mState);
    } catch (std::system_error const&) {
        return false; // out of threads: the timer stays stopped
    }
    mState->alive = true;
    control.unlock();
    return true;
}

bool CKVTickCount::stop()
{
    if (onTimerThread()) {
        std::lock_guard<std::mutex> lock(mState->mutex);
        mState->stopRequested = true;
        return true;
    }

    std::lock_guard<std::mutex> control(mControl);
    {
        std::lock_guard<std::mutex> lock(mState->mutex);
        mState->shutdown = true;
    }
    mState->wake.notify_all();
    // Waits for a callback in progress: after this no call can start.
    if (mThread.joinable())
        mThread.join();
    return true;
}

bool CKVTickCount::isRunning() const
{
    std::lock_guard<std::mutex> lock(mState->mutex);
    return mState->alive && !mState->shutdown && !mState->stopRequested;
}

void CKVTickCount::runTimer(std::shared_ptr<State> keepAlive)
{
    using Clock = std::chrono::steady_clock;
    State* state = keepAlive.get();
    tRunningState = state;

    std::unique_lock<std::mutex> lock(state->mutex);
    auto finished = [state] { return state->stopRequested || state->shutdown; };
    Clock::time_point due = Clock::now() + std::chrono::milliseconds(state->periodMs);
    for (;;) {
        if (state->wake.wait_until(lock, due, finished))
            break;
        if (Clock::now() < due)
            continue; // woken early (spurious or by a period change)

        TickCallback callback = state->callback;
        void* userData = state->userData;
        lock.unlock();
        if (callback)
            callback(userData);
        lock.lock();
        if (finished())
            break;

        // Fixed rate while the callback keeps up; after an overrun the next
        // call comes at once and the lost periods are dropped, not replayed.
        due += std::chrono::milliseconds(state->periodMs);
        Clock::time_point const now = Clock::now();
        if (due < now)
            due = now;
    }
    state->alive = false;
    lock.unlock();
    tRunningState = nullptr;
    // keepAlive goes last: the state may die with it.
}

} // namespace Kelvor
