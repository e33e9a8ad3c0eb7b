#pragma once

#include "TarnwickRender/CKVRCNodeObjectData.h"
#include "TarnwickRender/CKVRCRenderObjectData.h"
#include "TarnwickRender/CKVRenderCommand.h"

namespace Kelvor {

class CKVRenderObject;
class CKVSceneNode;

// Removes a render object from a scene node.
class CKVRCRemoveRenderObject : public CKVRenderCommand, public CKVRCNodeObjectData, public CKVRCRenderObjectData
{
    KV_DECLARE_RUNTIME_CLASS(CKVRCRemoveRenderObject)
public:
    CKVRCRemoveRenderObject(CKVSceneNode* node, CKVRenderObject* object);
    ~CKVRCRemoveRenderObject() override;

    ID getID() const override;
};

} // namespace Kelvor
