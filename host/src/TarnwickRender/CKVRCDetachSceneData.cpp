#include "TarnwickRender/CKVRCDetachSceneData.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS(CKVRCDetachSceneData, CKVRenderCommand)

CKVRCDetachSceneData::CKVRCDetachSceneData(CKVSceneNode* node)
    : CKVRCNodeObjectData(node)
{
}

CKVRCDetachSceneData::~CKVRCDetachSceneData() = default;

CKVRenderCommand::ID CKVRCDetachSceneData::getID() const
{
    return kDetachSceneData;
}

} // namespace Kelvor
