#pragma once

#include "TarnwickRender/CKVRCNodeObjectData.h"
#include "TarnwickRender/CKVRenderCommand.h"

namespace Kelvor {

class CKVSceneNode;

// Removes every render object of a scene node.
class CKVRCRemoveAllRenderObject : public CKVRenderCommand, public CKVRCNodeObjectData
{
    KV_DECLARE_RUNTIME_CLASS(CKVRCRemoveAllRenderObject)
public:
    explicit CKVRCRemoveAllRenderObject(CKVSceneNode* node);
    ~CKVRCRemoveAllRenderObject() override;

    ID getID() const override;
};

} // namespace Kelvor
