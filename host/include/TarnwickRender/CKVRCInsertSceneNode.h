#pragma once

#include "TarnwickCommon/kv_shared_ptr.h"
#include "TarnwickRender/CKVRCNodeObjectData.h"
#include "TarnwickRender/CKVRenderCommand.h"

namespace Kelvor {

class CKVSceneNode;

// Adds the node object as a child of the parent node.
class CKVRCInsertSceneNode : public CKVRenderCommand, public CKVRCNodeObjectData
{
    KV_DECLARE_RUNTIME_CLASS(CKVRCInsertSceneNode)
public:
    CKVRCInsertSceneNode(CKVSceneNode* parent, CKVSceneNode* node);
    ~CKVRCInsertSceneNode() override;

    ID getID() const override;

    CKVSceneNode* getParent() const { return mParent.get(); }

private:
    kv_shared_ptr<CKVSceneNode> mParent;
};

} // namespace Kelvor
