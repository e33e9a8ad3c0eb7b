#include "TarnwickRender/CKVRCRemoveSceneNode.h"

#include "TarnwickRender/CKVSceneNode.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS(CKVRCRemoveSceneNode, CKVRenderCommand)

CKVRCRemoveSceneNode::CKVRCRemoveSceneNode(CKVSceneNode* parent, CKVSceneNode* node)
    : CKVRCNodeObjectData(node), mParent(parent)
{
}

CKVRCRemoveSceneNode::~CKVRCRemoveSceneNode() = default;

CKVRenderCommand::ID CKVRCRemoveSceneNode::getID() const
{
    return kRemoveSceneNode;
}

} // namespace Kelvor
