#include "binding/CKVRCDispatchWaterMask.h"

#include "binding/CKVRCDispatchChecks.h"
#include "binding/CKVRenderContextImp.h"

#include "TarnwickRender/CKVRCWaterMask.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS_DYNAMIC(CKVRCDispatchWaterMask, CKVRenderCommandDispatch)

CKVRCDispatchWaterMask::CKVRCDispatchWaterMask() = default;

CKVRCDispatchWaterMask::~CKVRCDispatchWaterMask() = default;

bool CKVRCDispatchWaterMask::dispatch(CKVRenderContext* context, CKVRenderCommand& command)
{
    CKVRenderContextImp* imp = CKVRCDispatchChecks::context(context);
    auto* record = CKVRCDispatchChecks::record<CKVRCWaterMask>(command);
    if (!imp || !record)
        return false;
    return imp->waterMask(record->getImagePath(), record->getWidth(), record->getHeight());
}

} // namespace Kelvor
