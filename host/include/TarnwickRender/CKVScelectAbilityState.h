#pragma once

#include "TarnwickRender/CKVVisibilityState.h"

namespace Kelvor {

// In which modes a node can be picked, by the modes of CKVVisibilityState.
class CKVScelectAbilityState : public CKVSceneNodeState
{
    KV_DECLARE_RUNTIME_CLASS(CKVScelectAbilityState)
public:
    // Selectable in kDisplay.
    CKVScelectAbilityState() = default;
    ~CKVScelectAbilityState() override;

    Type getType() const override { return kSelectAbility; }
    CKVSceneNodeState* clone() const override { return new CKVScelectAbilityState(*this); }

    bool getSelectAbility(CKVVisibilityState::Mode mode) const { return (mModes & mode) != 0u; }
    void addSelectAbility(CKVVisibilityState::Mode mode);
    void removeSelectAbility(CKVVisibilityState::Mode mode);

private:
    CKVScelectAbilityState(CKVScelectAbilityState const&) = default;

    unsigned int mModes = CKVVisibilityState::kDisplay;
};

} // namespace Kelvor
