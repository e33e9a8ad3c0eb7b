#pragma once

#include "TarnwickRender/CKVBasicMaterial.h"

namespace Kelvor {

// Tessellated water with moving waves. Deliberately not a CKVWaterMaterial:
// the two are drawn by different programs and told apart by class.
class CKVPhysicalWaterMaterial : public CKVBasicMaterial
{
    KV_DECLARE_RUNTIME_CLASS(CKVPhysicalWaterMaterial)
public:
    CKVPhysicalWaterMaterial() = default;
    CKVPhysicalWaterMaterial(CKVPhysicalWaterMaterial const&) = default;
    CKVPhysicalWaterMaterial& operator=(CKVPhysicalWaterMaterial const&) = default;
    ~CKVPhysicalWaterMaterial() override;

    MaterialType getType() const override { return kPhysicalWater; }
    CKVBasicMaterial* clone() const override { return new CKVPhysicalWaterMaterial(*this); }
    void getProgramParam(CKVProgramParam& param) const override;

    float getSpeed() const { return mSpeed; }
    void setSpeed(float speed) { mSpeed = speed; }

protected:
    int compareContent(CKVBasicMaterial const& other) const override;

private:
    float mSpeed = 1.0f;
};

} // namespace Kelvor
