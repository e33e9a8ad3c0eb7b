#include "TarnwickRender/CKVRenderCommandCache.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS_DYNAMIC(CKVRenderCommandCache, CKVSharedObject)

CKVRenderCommandCache::CKVRenderCommandCache() = default;

CKVRenderCommandCache::~CKVRenderCommandCache() = default;

bool CKVRenderCommandCache::write(CKVRenderCommand const* command)
{
    if (!command)
        return false;
    // Commands are recorded const by the host but the render thread writes
    // results into them, so the queue holds them mutable.
    kv_shared_ptr<CKVRenderCommand> held(const_cast<CKVRenderCommand*>(command));
    std::lock_guard<std::mutex> lock(mMutex);
    mOpenBatch.push_back(std::move(held));
    return true;
}

void CKVRenderCommandCache::finish()
{
    std::lock_guard<std::mutex> lock(mMutex);
    for (kv_shared_ptr<CKVRenderCommand>& command : mOpenBatch)
        mReadable.push_back(std::move(command));
    mOpenBatch.clear();
}

unsigned int CKVRenderCommandCache::read(CommandList& out, bool forcedFrame)
{
    CommandList taken;
    {
        std::lock_guard<std::mutex> lock(mMutex);
        taken.swap(mReadable);
    }
    unsigned int const count = static_cast<unsigned int>(taken.size());
    out.splice(out.end(), taken);
    return count;
}

bool CKVRenderCommandCache::submitAndWait(CKVRenderCommand* command, unsigned int timeoutMs)
{
    if (!command)
        return false;
    kv_shared_ptr<CKVRenderCommand> keepAlive(command);
    command->setSync(true);
    // Re-arm before the command becomes visible, so that the render thread's
    // signal cannot be lost to the reset.
    command->resetSignal();
    write(command);
    finish();
    return command->wait(timeoutMs);
}

unsigned int CKVRenderCommandCache::pendingCount() const
{
    std::lock_guard<std::mutex> lock(mMutex);
    return static_cast<unsigned int>(mOpenBatch.size());
}

unsigned int CKVRenderCommandCache::readableCount() const
{
    std::lock_guard<std::mutex> lock(mMutex);
    return static_cast<unsigned int>(mReadable.size());
}

} // namespace Kelvor
