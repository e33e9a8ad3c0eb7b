#pragma once

#include "TarnwickCommon/kv_shared_ptr.h"
#include "TarnwickRender/CKVRenderCommand.h"

#include <vector>

namespace Kelvor {

class CKVBufferGeometry;
class CKVLogicBufferGeometry;

// Carries the logic buffers added to or removed from a buffer geometry since
// its last update, for the render thread to pack into the physical buffers.
class CKVRCUpdateBufferGeometry : public CKVRenderCommand
{
    KV_DECLARE_RUNTIME_CLASS(CKVRCUpdateBufferGeometry)
public:
    explicit CKVRCUpdateBufferGeometry(CKVBufferGeometry* geometry);
    ~CKVRCUpdateBufferGeometry() override;

    ID getID() const override;

    CKVBufferGeometry* getBufferGeometry() const { return mGeometry.get(); }

    // Records one change: `add` true to add the buffer, false to remove it.
    // False for null.
    bool addLogicBuffer(CKVLogicBufferGeometry* buffer, bool add);
    unsigned int getNumLogicBuffer() const { return static_cast<unsigned int>(mBuffers.size()); }
    // Appends the recorded changes, in order, to the two parallel vectors and
    // empties the record, so that a change is applied once.
    void takeLogicBufferGeometry(std::vector<kv_shared_ptr<CKVLogicBufferGeometry>>& buffers, std::vector<bool>& add);

private:
    kv_shared_ptr<CKVBufferGeometry> mGeometry;
    std::vector<kv_shared_ptr<CKVLogicBufferGeometry>> mBuffers;
    std::vector<bool> mAdd;
};

} // namespace Kelvor
