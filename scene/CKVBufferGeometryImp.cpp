#include "scene/CKVBufferGeometryImp.h"

#include "scene/CKVOSGGeometry.h"

#include <algorithm>
#include <mutex>

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS_DYNAMIC(CKVBufferGeometryImp, CKVBufferGeometry)

CKVBufferGeometry* createBufferGeometryImp()
{
    return new CKVBufferGeometryImp();
}

CKVBufferGeometryImp::CKVBufferGeometryImp()
    : mGeometry(new CKVOSGGeometry(this))
{
}

CKVBufferGeometryImp::~CKVBufferGeometryImp()
{
    mGeometry->clearHostGeometry();
    mGeometry = nullptr;
}

bool CKVBufferGeometryImp::updateLogicBuffers(std::vector<bool> const& add,
                                              std::vector<CKVLogicBufferGeometry*> const& buffers)
{
    std::size_t const count = std::min(add.size(), buffers.size());
    if (count == 0)
        return false;

    bool changed = false;
    std::lock_guard<std::mutex> lock(getLogicBufferMutex());
    for (std::size_t i = 0; i < count; ++i)
    {
        bool const done = add[i] ? addLogicBufferImp(buffers[i]) : removeLogicBufferImp(buffers[i]);
        changed = changed || done;
    }
    return changed;
}

} // namespace Kelvor
