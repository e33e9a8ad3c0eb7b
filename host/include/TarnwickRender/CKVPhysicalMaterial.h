#pragma once

#include "TarnwickRender/CKVBasicMaterial.h"

namespace Kelvor {

// A metal-roughness surface with optional normal, roughness and ambient
// occlusion maps.
class CKVPhysicalMaterial : public CKVBasicMaterial
{
    KV_DECLARE_RUNTIME_CLASS(CKVPhysicalMaterial)
public:
    CKVPhysicalMaterial() = default;
    CKVPhysicalMaterial(CKVPhysicalMaterial const&) = default;
    CKVPhysicalMaterial& operator=(CKVPhysicalMaterial const&) = default;
    ~CKVPhysicalMaterial() override;

    MaterialType getType() const override { return kPhysical; }
    CKVBasicMaterial* clone() const override { return new CKVPhysicalMaterial(*this); }
    void getProgramParam(CKVProgramParam& param) const override;

    // 0 dielectric to 1 metal.
    float getMetallic() const { return mMetallic; }
    void setMetallic(float metallic) { mMetallic = metallic; }
    // 0 mirror to 1 fully rough; used where there is no roughness map.
    float getRoughness() const { return mRoughness; }
    void setRoughness(float roughness) { mRoughness = roughness; }

    // Image paths, empty when absent.
    char const* getNormalMap() const { return mNormalMap.c_str(); }
    void setNormalMap(char const* path) { mNormalMap = path; }
    char const* getRoughnessMap() const { return mRoughnessMap.c_str(); }
    void setRoughnessMap(char const* path) { mRoughnessMap = path; }
    char const* getAoMap() const { return mAoMap.c_str(); }
    void setAoMap(char const* path) { mAoMap = path; }

protected:
    int compareContent(CKVBasicMaterial const& other) const override;

private:
    float mMetallic = 0.0f;
    float mRoughness = 0.5f;
    CKVAString mNormalMap;
    CKVAString mRoughnessMap;
    CKVAString mAoMap;
};

} // namespace Kelvor
