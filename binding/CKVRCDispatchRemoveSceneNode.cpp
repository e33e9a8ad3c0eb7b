#include "binding/CKVRCDispatchRemoveSceneNode.h"

#include "binding/CKVRCDispatchChecks.h"
#include "scene/CKVSceneNodeImp.h"

#include "TarnwickRender/CKVRCRemoveSceneNode.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS_DYNAMIC(CKVRCDispatchRemoveSceneNode, CKVRenderCommandDispatch)

CKVRCDispatchRemoveSceneNode::CKVRCDispatchRemoveSceneNode() = default;

CKVRCDispatchRemoveSceneNode::~CKVRCDispatchRemoveSceneNode() = default;

bool CKVRCDispatchRemoveSceneNode::dispatch(CKVRenderContext*, CKVRenderCommand& command)
{
    auto* record = CKVRCDispatchChecks::record<CKVRCRemoveSceneNode>(command);
    CKVSceneNodeImp* node = record ? CKVRCDispatchChecks::sceneNode(record->getParent()) : nullptr;
    if (!node)
        return false;
    return node->removeChildNode(record->getNodeObject());
}

} // namespace Kelvor
