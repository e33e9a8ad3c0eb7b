#include "binding/CKVRCDispatchChecks.h"

#include "binding/CKVRenderContextImp.h"
#include "scene/CKVSceneNodeImp.h"

namespace Kelvor {

CKVRenderContextImp* CKVRCDispatchChecks::context(CKVRenderContext* context)
{
    return context && context->isKindOf(CKVRenderContextImp::desc()) ? static_cast<CKVRenderContextImp*>(context)
                                                                      : nullptr;
}

CKVSceneNodeImp* CKVRCDispatchChecks::sceneNode(CKVSceneNode* node)
{
    return node && node->isKindOf(CKVSceneNodeImp::desc()) ? static_cast<CKVSceneNodeImp*>(node) : nullptr;
}

} // namespace Kelvor
