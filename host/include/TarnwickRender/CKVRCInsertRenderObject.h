#pragma once

#include "TarnwickRender/CKVRCNodeObjectData.h"
#include "TarnwickRender/CKVRCRenderObjectData.h"
#include "TarnwickRender/CKVRenderCommand.h"

namespace Kelvor {

class CKVRenderObject;
class CKVSceneNode;

// Adds a render object to a scene node.
class CKVRCInsertRenderObject : public CKVRenderCommand, public CKVRCNodeObjectData, public CKVRCRenderObjectData
{
    KV_DECLARE_RUNTIME_CLASS(CKVRCInsertRenderObject)
public:
    CKVRCInsertRenderObject(CKVSceneNode* node, CKVRenderObject* object);
    ~CKVRCInsertRenderObject() override;

    ID getID() const override;
};

} // namespace Kelvor
