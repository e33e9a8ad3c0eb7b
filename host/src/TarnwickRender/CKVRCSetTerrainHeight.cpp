#include "TarnwickRender/CKVRCSetTerrainHeight.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS(CKVRCSetTerrainHeight, CKVRenderCommand)

CKVRCSetTerrainHeight::CKVRCSetTerrainHeight(float height)
    : mHeight(height)
{
}

CKVRCSetTerrainHeight::~CKVRCSetTerrainHeight() = default;

CKVRenderCommand::ID CKVRCSetTerrainHeight::getID() const
{
    return kSetTerrainHeight;
}

} // namespace Kelvor
