#include "TarnwickRender/CKVMaterialState.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS_DYNAMIC(CKVMaterialState, CKVSceneNodeState)

CKVMaterialState::~CKVMaterialState() = default;

void CKVMaterialState::setMaterial(CKVBasicMaterial const* material)
{
    mMaterial = material;
    dirty(true);
}

} // namespace Kelvor
