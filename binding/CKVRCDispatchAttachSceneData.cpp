#include "binding/CKVRCDispatchAttachSceneData.h"

#include "binding/CKVRCDispatchChecks.h"
#include "binding/CKVRenderContextImp.h"

#include "TarnwickRender/CKVRCAttachSceneData.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS_DYNAMIC(CKVRCDispatchAttachSceneData, CKVRenderCommandDispatch)

CKVRCDispatchAttachSceneData::CKVRCDispatchAttachSceneData() = default;

CKVRCDispatchAttachSceneData::~CKVRCDispatchAttachSceneData() = default;

bool CKVRCDispatchAttachSceneData::dispatch(CKVRenderContext* context, CKVRenderCommand& command)
{
    CKVRenderContextImp* imp = CKVRCDispatchChecks::context(context);
    auto* record = CKVRCDispatchChecks::record<CKVRCAttachSceneData>(command);
    if (!imp || !record)
        return false;
    return imp->attachSceneData(record->getNodeObject());
}

} // namespace Kelvor
