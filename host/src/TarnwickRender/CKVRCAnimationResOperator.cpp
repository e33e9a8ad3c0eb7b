#include "TarnwickRender/CKVRCAnimationResOperator.h"

#include "TarnwickRender/CKVAnimationResource.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS(CKVRCAnimationResOperator, CKVRenderCommand)

CKVRCAnimationResOperator::CKVRCAnimationResOperator(CKVSceneNode* node, CKVAnimationResource* resource, Op op,
                                                     char const* activeAnimation)
    : CKVRCNodeObjectData(node), mOp(op), mResource(resource), mActiveAnimation(activeAnimation)
{
}

CKVRCAnimationResOperator::~CKVRCAnimationResOperator() = default;

CKVRenderCommand::ID CKVRCAnimationResOperator::getID() const
{
    return kAnimationResOperator;
}

} // namespace Kelvor
