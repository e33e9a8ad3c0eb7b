#include "binding/CKVRCDispatchUpdateBufferGeometry.h"

#include "binding/CKVRCDispatchChecks.h"
#include "scene/CKVBufferGeometryImp.h"
#include "scene/CKVOSGGeometry.h"

#include "TarnwickRender/CKVLogicBufferGeometry.h"
#include "TarnwickRender/CKVRCUpdateBufferGeometry.h"

#include <vector>

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS_DYNAMIC(CKVRCDispatchUpdateBufferGeometry, CKVRenderCommandDispatch)

CKVRCDispatchUpdateBufferGeometry::CKVRCDispatchUpdateBufferGeometry() = default;

CKVRCDispatchUpdateBufferGeometry::~CKVRCDispatchUpdateBufferGeometry() = default;

bool CKVRCDispatchUpdateBufferGeometry::dispatch(CKVRenderContext*, CKVRenderCommand& command)
{
    auto* record = CKVRCDispatchChecks::record<CKVRCUpdateBufferGeometry>(command);
    CKVBufferGeometry* hostGeometry = record ? record->getBufferGeometry() : nullptr;
    if (!hostGeometry || !hostGeometry->isKindOf(CKVBufferGeometryImp::desc()))
        return false;
    auto* geometry = static_cast<CKVBufferGeometryImp*>(hostGeometry);
    CKVOSGGeometry* osgGeometry = geometry->getOSGGeometry();
    if (!osgGeometry)
        return false;

    // The record gives its buffers up; the locals keep them alive until the
    // geometry has taken its own references.
    std::vector<kv_shared_ptr<CKVLogicBufferGeometry>> held;
    std::vector<bool> add;
    record->takeLogicBufferGeometry(held, add);
    std::vector<CKVLogicBufferGeometry*> buffers;
    buffers.reserve(held.size());
    for (kv_shared_ptr<CKVLogicBufferGeometry> const& buffer : held)
        buffers.push_back(buffer.get());
    geometry->updateLogicBuffers(add, buffers);

    bool const packed = geometry->updatePhysicalBuffer();
    if (packed)
        osgGeometry->rebuild();
    return packed;
}

} // namespace Kelvor
