#pragma once

#include "TarnwickCommon/CKVSharedObject.h"

#include <memory>
#include <mutex>
#include <thread>

namespace Kelvor {

// A periodic timer that calls one function on its own thread.
//
// Guarantees that the render loop relies on:
// - calls never overlap: there is one timer thread, and a call that takes
//   longer than the period is followed by the next call straight away, with
//   missed periods dropped rather than made up in a burst;
// - no call starts after stop() returns (when stop() is called from another
//   thread it waits for a call in progress to finish);
// - stop() and start() may be called from inside the callback; stop() then
//   returns at once and the thread ends after the callback returns;
// - start() on a running timer does nothing; the destructor stops the timer,
//   even when the last reference is dropped inside the callback.
// The period and the callback may be changed while running; a new period
// counts from the next call, a new callback is used from the next call.
class CKVTickCount : public CKVSharedObject
{
    KV_DECLARE_RUNTIME_CLASS(CKVTickCount)
public:
    using TickCallback = void (*)(void*);

    CKVTickCount();
    ~CKVTickCount() override;

    CKVTickCount(CKVTickCount const&) = delete;
    CKVTickCount& operator=(CKVTickCount const&) = delete;

    // Period in milliseconds; 0 is taken as 1. The default is 20.
    void setTimeOut(unsigned int milliseconds);
    unsigned int getTimeOut() const;
    void setTickCallback(TickCallback callback);
    void setUserData(void* userData);

    // False without a callback. The first call comes one period after start.
    bool start();
    // True; harmless on a stopped timer.
    bool stop();
    bool isRunning() const;

private:
    struct State;

    bool onTimerThread() const;
    static void runTimer(std::shared_ptr<State> state);

    std::shared_ptr<State> mState;
    // Serialises start/stop from threads other than the timer's own.
    std::mutex mControl;
    std::thread mThread;
};

} // namespace Kelvor
