#include "TarnwickRender/CKVRCRemoveAllChildNode.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS(CKVRCRemoveAllChildNode, CKVRenderCommand)

CKVRCRemoveAllChildNode::CKVRCRemoveAllChildNode(CKVSceneNode* node)
    : CKVRCNodeObjectData(node)
{
}

CKVRCRemoveAllChildNode::~CKVRCRemoveAllChildNode() = default;

CKVRenderCommand::ID CKVRCRemoveAllChildNode::getID() const
{
    return kRemoveAllChildNode;
}

} // namespace Kelvor
