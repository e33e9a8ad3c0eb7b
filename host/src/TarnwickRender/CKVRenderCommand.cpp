#include "TarnwickRender/CKVRenderCommand.h"

#include <chrono>

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS(CKVRenderCommand, CKVSharedObject)

CKVRenderCommand::CKVRenderCommand() = default;

CKVRenderCommand::CKVRenderCommand(CKVRenderCommand const& other)
    : CKVSharedObject(other), mSync(other.getSync())
{
}

CKVRenderCommand::~CKVRenderCommand() = default;

CKVRenderCommandDispatch* CKVRenderCommand::getDispatch() const
{
    return nullptr;
}

void CKVRenderCommand::signal()
{
    // Notifying under the lock keeps the waiter from returning (and perhaps
    // releasing the command) while this thread still touches the condition.
    std::lock_guard<std::mutex> lock(mSignalMutex);
    mSignalledFlag = true;
    mSignalled.notify_all();
}

bool CKVRenderCommand::wait(unsigned int timeoutMs) const
{
    std::unique_lock<std::mutex> lock(mSignalMutex);
    if (timeoutMs == kWaitForever) {
        mSignalled.wait(lock, [this] { return mSignalledFlag; });
        return true;
    }
    return mSignalled.wait_for(lock, std::chrono::milliseconds(timeoutMs), [this] { return mSignalledFlag; });
}

bool CKVRenderCommand::isSignalled() const
{
    std::lock_guard<std::mutex> lock(mSignalMutex);
    return mSignalledFlag;
}

void CKVRenderCommand::resetSignal()
{
    std::lock_guard<std::mutex> lock(mSignalMutex);
    mSignalledFlag = false;
}

} // namespace Kelvor
