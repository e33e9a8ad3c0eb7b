#pragma once

#include "TarnwickCommon/CKVSharedObject.h"

#include <atomic>
#include <condition_variable>
#include <mutex>

namespace Kelvor {

class CKVRenderCommandDispatch;

// One unit of work recorded by a host thread and carried out on the render
// thread. A host thread that must see the result marks the command
// synchronous and blocks in `wait` until the render thread calls `signal`
// after dispatching it. The signal is latched, so the order of `signal` and
// `wait` does not matter.
class CKVRenderCommand : public CKVSharedObject
{
    KV_DECLARE_RUNTIME_CLASS(CKVRenderCommand)
public:
    // Ids select the dispatch object through the registered dispatch factory.
    // 15 and 20 are unused. kApplyBackGround lies outside the dispatched range:
    // no dispatch factory answers it, a background travels inside a render
    // configuration instead.
    enum ID {
        kAttachSceneData = 0,
        kDetachSceneData = 1,
        kInsertSceneNode = 2,
        kRemoveSceneNode = 3,
        kRemoveAllChildNode = 4,
        kInsertRenderObject = 5,
        kRemoveRenderObject = 6,
        kRemoveAllRenderObject = 7,
        kApplyCamera = 8,
        kSetViewPort = 9,
        kGetCapture = 10,
        kPickSelectObject = 11,
        kAreaSelectObject = 12,
        kZoomCamera = 13,
        kUpdateClipTest = 14,
        kLineSegmentIntersection = 16,
        kApplyRenderConfig = 17,
        kWaterMask = 18,
        kSetActiveUniforms = 19,
        kSetTerrainHeight = 21,
        kUpdateBufferGeometry = 22,
        kAnimationResOperator = 23,
        kApplyBackGround = 24
    };

    static constexpr unsigned int kWaitForever = ~0u;

    ~CKVRenderCommand() override;

    virtual ID getID() const = 0;
    // A command may carry its own dispatch object; records return null and are
    // dispatched through the factory registered for their id.
    virtual CKVRenderCommandDispatch* getDispatch() const;

    bool getSync() const { return mSync.load(std::memory_order_acquire); }
    void setSync(bool sync) { mSync.store(sync, std::memory_order_release); }

    // Releases a thread blocked in `wait`, now or later. Any thread may call it.
    void signal();
    // Blocks until `signal` has been called; false when the time ran out first.
    bool wait(unsigned int timeoutMs = kWaitForever) const;
    bool isSignalled() const;
    // Re-arms the latch so that a command can be submitted again.
    void resetSignal();

protected:
    CKVRenderCommand();
    // A copy is a new command: not yet signalled, same synchronous flag.
    CKVRenderCommand(CKVRenderCommand const& other);

private:
    CKVRenderCommand& operator=(CKVRenderCommand const&) = delete;

    std::atomic<bool> mSync{false};
    mutable std::mutex mSignalMutex;
    mutable std::condition_variable mSignalled;
    bool mSignalledFlag = false;
};

} // namespace Kelvor
