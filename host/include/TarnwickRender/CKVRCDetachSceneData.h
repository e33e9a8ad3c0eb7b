#pragma once

#include "TarnwickRender/CKVRCNodeObjectData.h"
#include "TarnwickRender/CKVRenderCommand.h"

namespace Kelvor {

class CKVSceneNode;

// Takes a node tree off the render context's scene root.
class CKVRCDetachSceneData : public CKVRenderCommand, public CKVRCNodeObjectData
{
    KV_DECLARE_RUNTIME_CLASS(CKVRCDetachSceneData)
public:
    explicit CKVRCDetachSceneData(CKVSceneNode* node);
    ~CKVRCDetachSceneData() override;

    ID getID() const override;
};

} // namespace Kelvor
