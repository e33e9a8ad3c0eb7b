#include "binding/CKVRCDispatchGetCapture.h"

#include "binding/CKVRCDispatchChecks.h"
#include "binding/CKVRenderContextImp.h"

#include "TarnwickRender/CKVRCGetCapture.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS_DYNAMIC(CKVRCDispatchGetCapture, CKVRenderCommandDispatch)

CKVRCDispatchGetCapture::CKVRCDispatchGetCapture() = default;

CKVRCDispatchGetCapture::~CKVRCDispatchGetCapture() = default;

bool CKVRCDispatchGetCapture::dispatch(CKVRenderContext* context, CKVRenderCommand& command)
{
    CKVRenderContextImp* imp = CKVRCDispatchChecks::context(context);
    auto* record = CKVRCDispatchChecks::record<CKVRCGetCapture>(command);
    if (!imp || !record)
        return false;
    return imp->getCapture(record->getFilePath(), record->getSize(), record->getCamera(), record->getIsThumbnail());
}

} // namespace Kelvor
