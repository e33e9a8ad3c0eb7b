#include "binding/CKVRCDispatchApplyRenderConfig.h"

#include "binding/CKVRCDispatchChecks.h"
#include "binding/CKVRenderContextImp.h"

#include "TarnwickRender/CKVRCApplyRenderConfig.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS_DYNAMIC(CKVRCDispatchApplyRenderConfig, CKVRenderCommandDispatch)

CKVRCDispatchApplyRenderConfig::CKVRCDispatchApplyRenderConfig() = default;

CKVRCDispatchApplyRenderConfig::~CKVRCDispatchApplyRenderConfig() = default;

bool CKVRCDispatchApplyRenderConfig::dispatch(CKVRenderContext* context, CKVRenderCommand& command)
{
    CKVRenderContextImp* imp = CKVRCDispatchChecks::context(context);
    auto* record = CKVRCDispatchChecks::record<CKVRCApplyRenderConfig>(command);
    if (!imp || !record)
        return false;
    return imp->applyRenderConfig(record->getRenderConfig());
}

} // namespace Kelvor
