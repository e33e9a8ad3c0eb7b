#include "TarnwickRender/CKVRCAttachSceneData.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS(CKVRCAttachSceneData, CKVRenderCommand)

CKVRCAttachSceneData::CKVRCAttachSceneData(CKVSceneNode* node)
    : CKVRCNodeObjectData(node)
{
}

CKVRCAttachSceneData::~CKVRCAttachSceneData() = default;

CKVRenderCommand::ID CKVRCAttachSceneData::getID() const
{
    return kAttachSceneData;
}

} // namespace Kelvor
