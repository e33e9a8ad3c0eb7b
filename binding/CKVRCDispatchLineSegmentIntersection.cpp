#include "binding/CKVRCDispatchLineSegmentIntersection.h"

#include "binding/CKVRCDispatchChecks.h"
#include "binding/CKVRenderContextImp.h"

#include "TarnwickRender/CKVRCLineSegmentIntersection.h"
#include "TarnwickRender/CKVSelectionResult.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS_DYNAMIC(CKVRCDispatchLineSegmentIntersection, CKVRenderCommandDispatch)

CKVRCDispatchLineSegmentIntersection::CKVRCDispatchLineSegmentIntersection() = default;

CKVRCDispatchLineSegmentIntersection::~CKVRCDispatchLineSegmentIntersection() = default;

bool CKVRCDispatchLineSegmentIntersection::dispatch(CKVRenderContext* context, CKVRenderCommand& command)
{
    CKVRenderContextImp* imp = CKVRCDispatchChecks::context(context);
    auto* record = CKVRCDispatchChecks::record<CKVRCLineSegmentIntersection>(command);
    if (!imp || !record)
        return false;
    CKVLineSeg const& segment = record->getLineSegment();
    CKVSelectionResult result;
    if (!imp->lineSegmentIntersection(segment.getStartPoint(), segment.getEndPoint(), result))
        return false;
    record->setSelection(new CKVSelectionResult(result));
    return true;
}

} // namespace Kelvor
