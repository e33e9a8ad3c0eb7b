#pragma once

#include "TarnwickCommon/CKVSharedObject.h"
#include "TarnwickCommon/kv_shared_ptr.h"

namespace Kelvor {

class CKVSceneNode;

// One layer of a graphics model (building, terrain, annotations ...), shown
// through its root scene node.
class CKVGraphicsModelField : public CKVSharedObject
{
    KV_DECLARE_RUNTIME_CLASS(CKVGraphicsModelField)
public:
    explicit CKVGraphicsModelField(CKVSceneNode* node = nullptr);
    ~CKVGraphicsModelField() override;

    CKVSceneNode* getNodeObject() const { return mNode.get(); }
    void setNodeObject(CKVSceneNode* node);

private:
    kv_shared_ptr<CKVSceneNode> mNode;
};

} // namespace Kelvor
