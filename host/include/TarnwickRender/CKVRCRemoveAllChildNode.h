#pragma once

#include "TarnwickRender/CKVRCNodeObjectData.h"
#include "TarnwickRender/CKVRenderCommand.h"

namespace Kelvor {

class CKVSceneNode;

// Removes every child of a scene node.
class CKVRCRemoveAllChildNode : public CKVRenderCommand, public CKVRCNodeObjectData
{
    KV_DECLARE_RUNTIME_CLASS(CKVRCRemoveAllChildNode)
public:
    explicit CKVRCRemoveAllChildNode(CKVSceneNode* node);
    ~CKVRCRemoveAllChildNode() override;

    ID getID() const override;
};

} // namespace Kelvor
