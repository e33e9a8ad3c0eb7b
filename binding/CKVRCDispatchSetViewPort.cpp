#include "binding/CKVRCDispatchSetViewPort.h"

#include "binding/CKVRCDispatchChecks.h"
#include "binding/CKVRenderContextImp.h"

#include "TarnwickRender/CKVRCSetViewPort.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS_DYNAMIC(CKVRCDispatchSetViewPort, CKVRenderCommandDispatch)

CKVRCDispatchSetViewPort::CKVRCDispatchSetViewPort() = default;

CKVRCDispatchSetViewPort::~CKVRCDispatchSetViewPort() = default;

bool CKVRCDispatchSetViewPort::dispatch(CKVRenderContext* context, CKVRenderCommand& command)
{
    CKVRenderContextImp* imp = CKVRCDispatchChecks::context(context);
    auto* record = CKVRCDispatchChecks::record<CKVRCSetViewPort>(command);
    if (!imp || !record)
        return false;
    CKVVec2<int> const& size = record->getViewPort();
    return imp->setViewPort(size.x, size.y);
}

} // namespace Kelvor
