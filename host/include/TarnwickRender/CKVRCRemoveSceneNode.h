#pragma once

#include "TarnwickCommon/kv_shared_ptr.h"
#include "TarnwickRender/CKVRCNodeObjectData.h"
#include "TarnwickRender/CKVRenderCommand.h"

namespace Kelvor {

class CKVSceneNode;

// Removes the node object from the children of the parent node.
class CKVRCRemoveSceneNode : public CKVRenderCommand, public CKVRCNodeObjectData
{
    KV_DECLARE_RUNTIME_CLASS(CKVRCRemoveSceneNode)
public:
    CKVRCRemoveSceneNode(CKVSceneNode* parent, CKVSceneNode* node);
    ~CKVRCRemoveSceneNode() override;

    ID getID() const override;

    CKVSceneNode* getParent() const { return mParent.get(); }

private:
    kv_shared_ptr<CKVSceneNode> mParent;
};

} // namespace Kelvor
