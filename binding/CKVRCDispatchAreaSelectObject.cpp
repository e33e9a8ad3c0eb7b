#include "binding/CKVRCDispatchAreaSelectObject.h"

#include "binding/CKVRCDispatchChecks.h"
#include "binding/CKVRenderContextImp.h"

#include "TarnwickRender/CKVRCAreaSelectObject.h"
#include "TarnwickRender/CKVSelectionResult.h"

#include <vector>

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS_DYNAMIC(CKVRCDispatchAreaSelectObject, CKVRenderCommandDispatch)

CKVRCDispatchAreaSelectObject::CKVRCDispatchAreaSelectObject() = default;

CKVRCDispatchAreaSelectObject::~CKVRCDispatchAreaSelectObject() = default;

bool CKVRCDispatchAreaSelectObject::dispatch(CKVRenderContext* context, CKVRenderCommand& command)
{
    CKVRenderContextImp* imp = CKVRCDispatchChecks::context(context);
    auto* record = CKVRCDispatchChecks::record<CKVRCAreaSelectObject>(command);
    if (!imp || !record)
        return false;
    std::vector<CKVSelectionResult> results;
    if (!imp->areaSelectObject(record->getNDCPos1(), record->getNDCPos2(), record->getMaxSelectionCount(), results))
        return false;
    record->setResult(results.empty() ? nullptr : results.data(), static_cast<unsigned int>(results.size()));
    return true;
}

} // namespace Kelvor
