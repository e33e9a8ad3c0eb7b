#include "TarnwickRender/CKVPhysicalWaterMaterial.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS_DYNAMIC(CKVPhysicalWaterMaterial, CKVBasicMaterial)

CKVPhysicalWaterMaterial::~CKVPhysicalWaterMaterial() = default;

void CKVPhysicalWaterMaterial::getProgramParam(CKVProgramParam& param) const
{
    CKVBasicMaterial::getProgramParam(param);
    param.setType(CKVProgramParam::kPhysicalWater);
    param.removeParam(CKVProgramParam::kUseTexture);
}

int CKVPhysicalWaterMaterial::compareContent(CKVBasicMaterial const& other) const
{
    if (int const c = CKVBasicMaterial::compareContent(other))
        return c;
    CKVPhysicalWaterMaterial const& water = static_cast<CKVPhysicalWaterMaterial const&>(other);
    if (mSpeed != water.mSpeed)
        return mSpeed < water.mSpeed ? -1 : 1;
    return 0;
}

} // namespace Kelvor
