#include "TarnwickRender/CKVRCUpdateBufferGeometry.h"

#include "TarnwickRender/CKVBufferGeometry.h"
#include "TarnwickRender/CKVLogicBufferGeometry.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS(CKVRCUpdateBufferGeometry, CKVRenderCommand)

CKVRCUpdateBufferGeometry::CKVRCUpdateBufferGeometry(CKVBufferGeometry* geometry)
    : mGeometry(geometry)
{
}

CKVRCUpdateBufferGeometry::~CKVRCUpdateBufferGeometry() = default;

CKVRenderCommand::ID CKVRCUpdateBufferGeometry::getID() const
{
    return kUpdateBufferGeometry;
}

bool CKVRCUpdateBufferGeometry::addLogicBuffer(CKVLogicBufferGeometry* buffer, bool add)
{
    if (!buffer)
        return false;
    mBuffers.emplace_back(buffer);
    mAdd.push_back(add);
    return true;
}

void CKVRCUpdateBufferGeometry::takeLogicBufferGeometry(std::vector<kv_shared_ptr<CKVLogicBufferGeometry>>& buffers,
                                                        std::vector<bool>& add)
{
    for (kv_shared_ptr<CKVLogicBufferGeometry>& buffer : mBuffers)
        buffers.push_back(std::move(buffer));
    add.insert(add.end(), mAdd.begin(), mAdd.end());
    mBuffers.clear();
    mAdd.clear();
}

} // namespace Kelvor
