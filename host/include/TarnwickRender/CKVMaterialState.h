#pragma once

#include "TarnwickCommon/kv_shared_ptr.h"
#include "TarnwickRender/CKVBasicMaterial.h"
#include "TarnwickRender/CKVSceneNodeState.h"

namespace Kelvor {

// The material of a node's render objects. The state keeps the material
// alive; materials are shared between nodes and not changed once set (set a
// new one to change the look).
class CKVMaterialState : public CKVSceneNodeState
{
    KV_DECLARE_RUNTIME_CLASS(CKVMaterialState)
public:
    CKVMaterialState() = default;
    explicit CKVMaterialState(CKVBasicMaterial const* material) : mMaterial(material) {}
    ~CKVMaterialState() override;

    Type getType() const override { return kMaterial; }
    CKVSceneNodeState* clone() const override { return new CKVMaterialState(*this); }

    CKVBasicMaterial const* getMaterial() const { return mMaterial.get(); }
    void setMaterial(CKVBasicMaterial const* material);

private:
    CKVMaterialState(CKVMaterialState const&) = default;

    kv_shared_ptr<CKVBasicMaterial const> mMaterial;
};

} // namespace Kelvor
