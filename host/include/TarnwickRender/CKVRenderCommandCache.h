#pragma once

#include "TarnwickCommon/CKVSharedObject.h"
#include "TarnwickCommon/kv_shared_ptr.h"
#include "TarnwickRender/CKVRenderCommand.h"

#include <list>
#include <mutex>
#include <vector>

namespace Kelvor {

// The queue between host threads and the render thread.
//
// Model: one open batch shared by all writers, and a readable queue.
// `write` appends to the open batch; `finish` moves the whole open batch to
// the end of the readable queue; `read` takes the whole readable queue.
// So nothing is readable before a `finish`, every command is read exactly
// once, and commands leave in the order in which they were written (each
// writer's own order included). A `finish` from one thread publishes what
// other threads wrote before it too: batches are a unit of visibility, not
// of ownership. All operations are safe for any number of writers and one
// reader.
class CKVRenderCommandCache : public CKVSharedObject
{
    KV_DECLARE_RUNTIME_CLASS(CKVRenderCommandCache)
public:
    using CommandList = std::list<kv_shared_ptr<CKVRenderCommand>>;

    CKVRenderCommandCache();
    ~CKVRenderCommandCache() override;

    CKVRenderCommandCache(CKVRenderCommandCache const&) = delete;
    CKVRenderCommandCache& operator=(CKVRenderCommandCache const&) = delete;

    // Appends to the open batch and takes a reference. False for null.
    bool write(CKVRenderCommand const* command);
    // Makes the open batch readable.
    void finish();
    // Appends every readable command to `out`, oldest first, and leaves the
    // readable queue empty. `forcedFrame` is what the render context passes
    // when the scene does not update frames by itself; since a finished batch
    // is readable at once, there is nothing to hurry and both values read the
    // same commands. Returns the number of commands moved.
    unsigned int read(CommandList& out, bool forcedFrame);

    // For a host thread that needs the result: marks the command synchronous,
    // writes it, finishes the batch and blocks until the render thread has
    // signalled it or the time ran out (false; false for null too). The
    // command is kept alive during the call; to read its results afterwards
    // the caller holds its own reference.
    bool submitAndWait(CKVRenderCommand* command, unsigned int timeoutMs = CKVRenderCommand::kWaitForever);

    // Commands written but not yet finished, and finished but not yet read.
    unsigned int pendingCount() const;
    unsigned int readableCount() const;

private:
    mutable std::mutex mMutex;
    std::vector<kv_shared_ptr<CKVRenderCommand>> mOpenBatch;
    CommandList mReadable;
};

} // namespace Kelvor
