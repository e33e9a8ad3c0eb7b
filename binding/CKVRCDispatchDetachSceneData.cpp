#include "binding/CKVRCDispatchDetachSceneData.h"

#include "binding/CKVRCDispatchChecks.h"
#include "binding/CKVRenderContextImp.h"

#include "TarnwickRender/CKVRCDetachSceneData.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS_DYNAMIC(CKVRCDispatchDetachSceneData, CKVRenderCommandDispatch)

CKVRCDispatchDetachSceneData::CKVRCDispatchDetachSceneData() = default;

CKVRCDispatchDetachSceneData::~CKVRCDispatchDetachSceneData() = default;

bool CKVRCDispatchDetachSceneData::dispatch(CKVRenderContext* context, CKVRenderCommand& command)
{
    CKVRenderContextImp* imp = CKVRCDispatchChecks::context(context);
    auto* record = CKVRCDispatchChecks::record<CKVRCDetachSceneData>(command);
    if (!imp || !record)
        return false;
    return imp->detachSceneData(record->getNodeObject());
}

} // namespace Kelvor
