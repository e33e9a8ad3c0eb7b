#include "TarnwickRender/CKVTerrainMaterial.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS_DYNAMIC(CKVTerrainMaterial, CKVBasicMaterial)

CKVTerrainMaterial::~CKVTerrainMaterial() = default;

void CKVTerrainMaterial::getProgramParam(CKVProgramParam& param) const
{
    // The layers come in a texture array of their own, not the albedo slot.
    CKVBasicMaterial::getProgramParam(param);
    param.setType(CKVProgramParam::kTerrain);
    param.removeParam(CKVProgramParam::kUseTexture);
}

int CKVTerrainMaterial::compareContent(CKVBasicMaterial const& other) const
{
    if (int const c = CKVBasicMaterial::compareContent(other))
        return c;
    CKVTerrainMaterial const& terrain = static_cast<CKVTerrainMaterial const&>(other);
    if (mChangeHeight != terrain.mChangeHeight)
        return mChangeHeight < terrain.mChangeHeight ? -1 : 1;
    if (mTextures.size() != terrain.mTextures.size())
        return mTextures.size() < terrain.mTextures.size() ? -1 : 1;
    for (unsigned int i = 0; i < mTextures.size(); ++i) {
        if (int const c = mTextures[i].compare(terrain.mTextures[i].c_str()))
            return c < 0 ? -1 : 1;
    }
    return 0;
}

} // namespace Kelvor
