#pragma once

#include "TarnwickGeometry/CKVPoint2D.h"
#include "TarnwickRender/CKVBasicMaterial.h"

namespace Kelvor {

// A flat water surface with moving normal-mapped ripples.
class CKVWaterMaterial : public CKVBasicMaterial
{
    KV_DECLARE_RUNTIME_CLASS(CKVWaterMaterial)
public:
    CKVWaterMaterial() = default;
    CKVWaterMaterial(CKVWaterMaterial const&) = default;
    CKVWaterMaterial& operator=(CKVWaterMaterial const&) = default;
    ~CKVWaterMaterial() override;

    MaterialType getType() const override { return kWater; }
    CKVBasicMaterial* clone() const override { return new CKVWaterMaterial(*this); }
    void getProgramParam(CKVProgramParam& param) const override;

    // The direction in which the ripples travel, in the xy plane.
    CKVPoint2D getFlowDir() const { return mFlowDir; }
    void setFlowDir(CKVPoint2D const& direction) { mFlowDir = direction; }
    // Strength of the ripples' normals.
    float getNormalScale() const { return mNormalScale; }
    void setNormalScale(float scale) { mNormalScale = scale; }
    float getSpeed() const { return mSpeed; }
    void setSpeed(float speed) { mSpeed = speed; }

protected:
    int compareContent(CKVBasicMaterial const& other) const override;

private:
    CKVPoint2D mFlowDir{1.0, 0.0};
    float mNormalScale = 1.0f;
    float mSpeed = 1.0f;
};

} // namespace Kelvor
