#include "scene/CKVBufferGeometryImp.h"

#include "picking/CKVInstanceSearch.h"
#include "scene/CKVOSGGeometry.h"

#include <algorithm>
#include <mutex>
#include <new>

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS_DYNAMIC(CKVBufferGeometryImp, CKVBufferGeometry)

CKVBufferGeometry* createBufferGeometryImp()
{
    // The host takes null for an allocation that failed; its members
    // allocate too, so std::nothrow alone would not do.
    try {
        return new CKVBufferGeometryImp();
    } catch (std::bad_alloc const&) {
        return nullptr;
    }
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

CKVInstanceSearch& CKVBufferGeometryImp::instanceSearch()
{
    if (!mInstanceSearch.valid())
        mInstanceSearch = new CKVInstanceSearch;
    return *mInstanceSearch;
}

} // namespace Kelvor
