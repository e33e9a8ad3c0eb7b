#pragma once

#include "TarnwickCommon/CKVArray.h"
#include "TarnwickRender/CKVBasicMaterial.h"

namespace Kelvor {

// Ground textured by layers that blend with height and slope.
class CKVTerrainMaterial : public CKVBasicMaterial
{
    KV_DECLARE_RUNTIME_CLASS(CKVTerrainMaterial)
public:
    using TextureArray = CKVArray<CKVAString, ArrayObjectOperator<CKVAString>>;

    CKVTerrainMaterial() = default;
    CKVTerrainMaterial(CKVTerrainMaterial const&) = default;
    CKVTerrainMaterial& operator=(CKVTerrainMaterial const&) = default;
    ~CKVTerrainMaterial() override;

    MaterialType getType() const override { return kTerrain; }
    CKVBasicMaterial* clone() const override { return new CKVTerrainMaterial(*this); }
    void getProgramParam(CKVProgramParam& param) const override;

    // The height in metres at which the lower layers give way to the upper.
    float getChangeHeight() const { return mChangeHeight; }
    void setChangeHeight(float height) { mChangeHeight = height; }

    // Layer image paths, lowest layer first. Empty: the layers the
    // atmosphere already holds are used.
    TextureArray const& getTextureArray() const { return mTextures; }
    void addTexture(char const* path) { mTextures.add(CKVAString(path)); }
    void clearTextures() { mTextures.clear(); }

protected:
    int compareContent(CKVBasicMaterial const& other) const override;

private:
    float mChangeHeight = 0.0f;
    TextureArray mTextures;
};

} // namespace Kelvor
