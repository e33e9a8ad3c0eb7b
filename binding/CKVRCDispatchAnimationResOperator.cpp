#include "binding/CKVRCDispatchAnimationResOperator.h"

#include "binding/CKVRCDispatchChecks.h"
#include "fbx/CKVFBXAnimationImp.h"
#include "scene/CKVSceneNodeImp.h"

#include "TarnwickRender/CKVAnimationResource.h"
#include "TarnwickRender/CKVFBXAnimation.h"
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
    CKVAnimationResource* resource = record->getAnimationRes();
    if (!resource || !resource->isKindOf(CKVFBXAnimation::desc()))
        return false;
    CKVSceneNodeImp* node = CKVRCDispatchChecks::sceneNode(record->getNodeObject());
    if (!node)
        return false;
    // Resources of another FBX class have nothing we can attach or play.
    if (!resource->isKindOf(CKVFBXAnimationImp::desc()))
        return false;
    auto* animation = static_cast<CKVFBXAnimationImp*>(resource);
    CKVOSGTransformNode* group = node->getOSGNode();

    switch (record->getOp()) {
    case CKVRCAnimationResOperator::kAttach:
        if (!group || !animation->getNode())
            return false;
        if (!group->containsNode(animation->getNode()))
            group->addChild(animation->getNode());
        return true;
    case CKVRCAnimationResOperator::kDetach:
        if (group && animation->getNode())
            group->removeChild(animation->getNode());
        return true;
    case CKVRCAnimationResOperator::kSetActiveAnimation:
        animation->playAnimation(record->getActiveAnimation());
        return true;
    case CKVRCAnimationResOperator::kStop:
        animation->stopAll();
        return true;
    default:
        return false;
    }
}

} // namespace Kelvor
