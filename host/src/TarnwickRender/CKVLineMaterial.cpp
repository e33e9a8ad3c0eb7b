#include "TarnwickRender/CKVLineMaterial.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS_DYNAMIC(CKVLineMaterial, CKVBasicMaterial)

CKVLineMaterial::~CKVLineMaterial() = default;

void CKVLineMaterial::getProgramParam(CKVProgramParam& param) const
{
    // Lines have no normals to light; they draw in their flat colour.
    CKVBasicMaterial::getProgramParam(param);
    param.setType(CKVProgramParam::kFlatColor);
    param.removeParam(CKVProgramParam::kUseTexture);
}

int CKVLineMaterial::compareContent(CKVBasicMaterial const& other) const
{
    if (int const c = CKVBasicMaterial::compareContent(other))
        return c;
    CKVLineMaterial const& line = static_cast<CKVLineMaterial const&>(other);
    if (mLineWidth != line.mLineWidth)
        return mLineWidth < line.mLineWidth ? -1 : 1;
    if (mLineType != line.mLineType)
        return mLineType < line.mLineType ? -1 : 1;
    return 0;
}

} // namespace Kelvor
