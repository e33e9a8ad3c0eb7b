#include "TarnwickRender/CKVRCInsertSceneNode.h"

#include "TarnwickRender/CKVSceneNode.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS(CKVRCInsertSceneNode, CKVRenderCommand)

CKVRCInsertSceneNode::CKVRCInsertSceneNode(CKVSceneNode* parent, CKVSceneNode* node)
    : CKVRCNodeObjectData(node), mParent(parent)
{
}

CKVRCInsertSceneNode::~CKVRCInsertSceneNode() = default;

CKVRenderCommand::ID CKVRCInsertSceneNode::getID() const
{
    return kInsertSceneNode;
}

} // namespace Kelvor
