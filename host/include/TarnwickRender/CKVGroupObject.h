#pragma once

#include "TarnwickCommon/kv_shared_ptr.h"
#include "TarnwickRender/CKVRenderObject.h"

namespace Kelvor {

class CKVSceneNode;

// A render object that stands for a whole scene node, so that one subtree
// can be placed under another node as content.
class CKVGroupObject : public CKVRenderObject
{
    KV_DECLARE_RUNTIME_CLASS(CKVGroupObject)
public:
    CKVGroupObject();
    explicit CKVGroupObject(CKVSceneNode* node);
    ~CKVGroupObject() override;

    // The node's box.
    CKVBndBox computeBoundingBox() const override;

    CKVSceneNode* getNodeObject() const;
    void setNodeObject(CKVSceneNode* node);

private:
    kv_shared_ptr<CKVSceneNode> mNode;
};

} // namespace Kelvor
