#include "binding/CKVRCDispatchApplyBackGround.h"

#include "binding/CKVRCDispatchChecks.h"
#include "binding/CKVRenderContextImp.h"

#include "TarnwickRender/CKVRCApplyBackGround.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS_DYNAMIC(CKVRCDispatchApplyBackGround, CKVRenderCommandDispatch)

CKVRCDispatchApplyBackGround::CKVRCDispatchApplyBackGround() = default;

CKVRCDispatchApplyBackGround::~CKVRCDispatchApplyBackGround() = default;

bool CKVRCDispatchApplyBackGround::dispatch(CKVRenderContext* context, CKVRenderCommand& command)
{
    CKVRenderContextImp* imp = CKVRCDispatchChecks::context(context);
    auto* record = CKVRCDispatchChecks::record<CKVRCApplyBackGround>(command);
    if (!imp || !record)
        return false;
    return imp->applyBackGround(record->getBackGround());
}

} // namespace Kelvor
