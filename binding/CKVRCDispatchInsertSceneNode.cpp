#include "binding/CKVRCDispatchInsertSceneNode.h"

#include "binding/CKVRCDispatchChecks.h"
#include "scene/CKVSceneNodeImp.h"

#include "TarnwickRender/CKVRCInsertSceneNode.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS_DYNAMIC(CKVRCDispatchInsertSceneNode, CKVRenderCommandDispatch)

CKVRCDispatchInsertSceneNode::CKVRCDispatchInsertSceneNode() = default;

CKVRCDispatchInsertSceneNode::~CKVRCDispatchInsertSceneNode() = default;

bool CKVRCDispatchInsertSceneNode::dispatch(CKVRenderContext*, CKVRenderCommand& command)
{
    auto* record = CKVRCDispatchChecks::record<CKVRCInsertSceneNode>(command);
    CKVSceneNodeImp* node = record ? CKVRCDispatchChecks::sceneNode(record->getParent()) : nullptr;
    if (!node)
        return false;
    return node->addChildNode(record->getNodeObject());
}

} // namespace Kelvor
