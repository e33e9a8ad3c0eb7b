#include "TarnwickRender/CKVWaterMaterial.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS_DYNAMIC(CKVWaterMaterial, CKVBasicMaterial)

CKVWaterMaterial::~CKVWaterMaterial() = default;

void CKVWaterMaterial::getProgramParam(CKVProgramParam& param) const
{
    // Water samples its own normal maps; the texture switch means nothing to it.
    CKVBasicMaterial::getProgramParam(param);
    param.setType(CKVProgramParam::kWater);
    param.removeParam(CKVProgramParam::kUseTexture);
}

int CKVWaterMaterial::compareContent(CKVBasicMaterial const& other) const
{
    if (int const c = CKVBasicMaterial::compareContent(other))
        return c;
    CKVWaterMaterial const& water = static_cast<CKVWaterMaterial const&>(other);
    if (mFlowDir.x != water.mFlowDir.x)
        return mFlowDir.x < water.mFlowDir.x ? -1 : 1;
    if (mFlowDir.y != water.mFlowDir.y)
        return mFlowDir.y < water.mFlowDir.y ? -1 : 1;
    if (mNormalScale != water.mNormalScale)
        return mNormalScale < water.mNormalScale ? -1 : 1;
    if (mSpeed != water.mSpeed)
        return mSpeed < water.mSpeed ? -1 : 1;
    return 0;
}

} // namespace Kelvor
