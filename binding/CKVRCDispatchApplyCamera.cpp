#include "binding/CKVRCDispatchApplyCamera.h"

#include "binding/CKVRCDispatchChecks.h"
#include "binding/CKVRenderContextImp.h"

#include "TarnwickRender/CKVRCApplyCamera.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS_DYNAMIC(CKVRCDispatchApplyCamera, CKVRenderCommandDispatch)

CKVRCDispatchApplyCamera::CKVRCDispatchApplyCamera() = default;

CKVRCDispatchApplyCamera::~CKVRCDispatchApplyCamera() = default;

bool CKVRCDispatchApplyCamera::dispatch(CKVRenderContext* context, CKVRenderCommand& command)
{
    CKVRenderContextImp* imp = CKVRCDispatchChecks::context(context);
    auto* record = CKVRCDispatchChecks::record<CKVRCApplyCamera>(command);
    if (!imp || !record)
        return false;
    return imp->applyCamera(record->getCamera());
}

} // namespace Kelvor
