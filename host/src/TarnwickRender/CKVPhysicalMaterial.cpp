#include "TarnwickRender/CKVPhysicalMaterial.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS_DYNAMIC(CKVPhysicalMaterial, CKVBasicMaterial)

CKVPhysicalMaterial::~CKVPhysicalMaterial() = default;

void CKVPhysicalMaterial::getProgramParam(CKVProgramParam& param) const
{
    CKVBasicMaterial::getProgramParam(param);
    param.setType(CKVProgramParam::kSurfacePBR);
}

int CKVPhysicalMaterial::compareContent(CKVBasicMaterial const& other) const
{
    if (int const c = CKVBasicMaterial::compareContent(other))
        return c;
    CKVPhysicalMaterial const& pbr = static_cast<CKVPhysicalMaterial const&>(other);
    if (mMetallic != pbr.mMetallic)
        return mMetallic < pbr.mMetallic ? -1 : 1;
    if (mRoughness != pbr.mRoughness)
        return mRoughness < pbr.mRoughness ? -1 : 1;
    if (int const c = mNormalMap.compare(pbr.mNormalMap.c_str()))
        return c < 0 ? -1 : 1;
    if (int const c = mRoughnessMap.compare(pbr.mRoughnessMap.c_str()))
        return c < 0 ? -1 : 1;
    if (int const c = mAoMap.compare(pbr.mAoMap.c_str()))
        return c < 0 ? -1 : 1;
    return 0;
}

} // namespace Kelvor
