#pragma once

#include "TarnwickCommon/kv_shared_ptr.h"

namespace Kelvor {

class CKVSceneNode;

// The scene node a command acts on. Holding a reference keeps the node alive
// until the render thread has dispatched the command, however the host's own
// references change in between.
class CKVRCNodeObjectData
{
public:
    CKVSceneNode* getNodeObject() const { return mNode.get(); }

protected:
    explicit CKVRCNodeObjectData(CKVSceneNode* node);
    ~CKVRCNodeObjectData();

    CKVRCNodeObjectData(CKVRCNodeObjectData const&) = delete;
    CKVRCNodeObjectData& operator=(CKVRCNodeObjectData const&) = delete;

private:
    kv_shared_ptr<CKVSceneNode> mNode;
};

} // namespace Kelvor
