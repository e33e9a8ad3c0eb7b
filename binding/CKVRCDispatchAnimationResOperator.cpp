#include "binding/CKVRCDispatchAnimationResOperator.h"

#include "binding/CKVRCDispatchChecks.h"

#include "TarnwickRender/CKVAnimationResource.h"
#include "TarnwickRender/CKVRCAnimationResOperator.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS_DYNAMIC(CKVRCDispatchAnimationResOperator, CKVRenderCommandDispatch)

CKVRCDispatchAnimationResOperator::CKVRCDispatchAnimationResOperator() = default;

CKVRCDispatchAnimationResOperator::~CKVRCDispatchAnimationResOperator() = default;

bool CKVRCDispatchAnimationResOperator::dispatch(CKVRenderContext*, CKVRenderCommand& command)
{
    auto* record = CKVRCDispatchChecks::record<CKVRCAnimationResOperator>(command);
    if (!record || record->getOp() == CKVRCAnimationResOperator::kNone)
        return false;
    if (!record->getAnimationRes() || !CKVRCDispatchChecks::sceneNode(record->getNodeObject()))
        return false;
    // Attach, detach, choose and stop work on our FBX animation resource's
    // node and clips; that class arrives with the animation resources, and
    // until then no resource the host holds is one of ours.
    return false;
}

} // namespace Kelvor
