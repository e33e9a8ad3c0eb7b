#pragma once

#include "TarnwickRender/CKVBasicMaterial.h"

namespace Kelvor {

// Unlit lines of a width and a stipple.
class CKVLineMaterial : public CKVBasicMaterial
{
    KV_DECLARE_RUNTIME_CLASS(CKVLineMaterial)
public:
    // 0 solid; 1 to 5 dashed, the value being the stipple factor.
    enum LineType : int { kSolid = 0, kDash1 = 1, kDash2 = 2, kDash3 = 3, kDash4 = 4, kDash5 = 5 };

    CKVLineMaterial() = default;
    CKVLineMaterial(CKVLineMaterial const&) = default;
    CKVLineMaterial& operator=(CKVLineMaterial const&) = default;
    ~CKVLineMaterial() override;

    MaterialType getType() const override { return kLine; }
    CKVBasicMaterial* clone() const override { return new CKVLineMaterial(*this); }
    void getProgramParam(CKVProgramParam& param) const override;

    // In pixels.
    float getLineWidth() const { return mLineWidth; }
    void setLineWidth(float width) { mLineWidth = width; }
    LineType getLineType() const { return mLineType; }
    void setLineType(LineType type) { mLineType = type; }

protected:
    int compareContent(CKVBasicMaterial const& other) const override;

private:
    float mLineWidth = 1.0f;
    LineType mLineType = kSolid;
};

} // namespace Kelvor
