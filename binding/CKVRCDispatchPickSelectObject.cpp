#include "binding/CKVRCDispatchPickSelectObject.h"

#include "binding/CKVRCDispatchChecks.h"
#include "binding/CKVRenderContextImp.h"

#include "TarnwickRender/CKVRCPickSelectObject.h"
#include "TarnwickRender/CKVSelectionResult.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS_DYNAMIC(CKVRCDispatchPickSelectObject, CKVRenderCommandDispatch)

CKVRCDispatchPickSelectObject::CKVRCDispatchPickSelectObject() = default;

CKVRCDispatchPickSelectObject::~CKVRCDispatchPickSelectObject() = default;

bool CKVRCDispatchPickSelectObject::dispatch(CKVRenderContext* context, CKVRenderCommand& command)
{
    CKVRenderContextImp* imp = CKVRCDispatchChecks::context(context);
    auto* record = CKVRCDispatchChecks::record<CKVRCPickSelectObject>(command);
    if (!imp || !record)
        return false;
    CKVSelectionResult result;
    if (!imp->pickSelectObject(record->getNDCPos(), result))
        return false;
    record->setSelection(new CKVSelectionResult(result));
    return true;
}

} // namespace Kelvor
