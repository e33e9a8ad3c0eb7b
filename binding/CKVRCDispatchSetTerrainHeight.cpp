#include "binding/CKVRCDispatchSetTerrainHeight.h"

#include "binding/CKVRCDispatchChecks.h"
#include "binding/CKVRenderContextImp.h"

#include "TarnwickRender/CKVRCSetTerrainHeight.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS_DYNAMIC(CKVRCDispatchSetTerrainHeight, CKVRenderCommandDispatch)

CKVRCDispatchSetTerrainHeight::CKVRCDispatchSetTerrainHeight() = default;

CKVRCDispatchSetTerrainHeight::~CKVRCDispatchSetTerrainHeight() = default;

bool CKVRCDispatchSetTerrainHeight::dispatch(CKVRenderContext* context, CKVRenderCommand& command)
{
    CKVRenderContextImp* imp = CKVRCDispatchChecks::context(context);
    auto* record = CKVRCDispatchChecks::record<CKVRCSetTerrainHeight>(command);
    if (!imp || !record)
        return false;
    return imp->setTerrainHeight(record->getHeight());
}

} // namespace Kelvor
