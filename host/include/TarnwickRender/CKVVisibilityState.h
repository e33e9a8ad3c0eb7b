#pragma once

#include "TarnwickRender/CKVSceneNodeState.h"

namespace Kelvor {

// In which modes a node is shown. Modes are bits; kDisplay is the ordinary
// frame, the others are free for the application's own views.
class CKVVisibilityState : public CKVSceneNodeState
{
    KV_DECLARE_RUNTIME_CLASS(CKVVisibilityState)
public:
    enum Mode : unsigned int { kDisplay = 1, kUserMode1 = 2, kUserMode2 = 4, kUserMode3 = 8 };

    // Visible in kDisplay: adding the state alone hides nothing.
    CKVVisibilityState() = default;
    ~CKVVisibilityState() override;

    Type getType() const override { return kVisibility; }
    CKVSceneNodeState* clone() const override { return new CKVVisibilityState(*this); }

    bool getVisibility(Mode mode) const { return (mModes & mode) != 0u; }
    void addVisibility(Mode mode);
    void removeVisibility(Mode mode);

private:
    CKVVisibilityState(CKVVisibilityState const&) = default;

    unsigned int mModes = kDisplay;
};

} // namespace Kelvor
