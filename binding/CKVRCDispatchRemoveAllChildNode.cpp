#include "binding/CKVRCDispatchRemoveAllChildNode.h"

#include "binding/CKVRCDispatchChecks.h"
#include "scene/CKVSceneNodeImp.h"

#include "TarnwickRender/CKVRCRemoveAllChildNode.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS_DYNAMIC(CKVRCDispatchRemoveAllChildNode, CKVRenderCommandDispatch)

CKVRCDispatchRemoveAllChildNode::CKVRCDispatchRemoveAllChildNode() = default;

CKVRCDispatchRemoveAllChildNode::~CKVRCDispatchRemoveAllChildNode() = default;

bool CKVRCDispatchRemoveAllChildNode::dispatch(CKVRenderContext*, CKVRenderCommand& command)
{
    auto* record = CKVRCDispatchChecks::record<CKVRCRemoveAllChildNode>(command);
    CKVSceneNodeImp* node = record ? CKVRCDispatchChecks::sceneNode(record->getNodeObject()) : nullptr;
    if (!node)
        return false;
    node->removeAllChildNode();
    return true;
}

} // namespace Kelvor
