#pragma once

#include "TarnwickRender/CKVRCNodeObjectData.h"
#include "TarnwickRender/CKVRenderCommand.h"

namespace Kelvor {

class CKVSceneNode;

// Hangs a node tree under the render context's scene root.
class CKVRCAttachSceneData : public CKVRenderCommand, public CKVRCNodeObjectData
{
    KV_DECLARE_RUNTIME_CLASS(CKVRCAttachSceneData)
public:
    explicit CKVRCAttachSceneData(CKVSceneNode* node);
    ~CKVRCAttachSceneData() override;

    ID getID() const override;
};

} // namespace Kelvor
