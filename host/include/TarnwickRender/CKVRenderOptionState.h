#pragma once

#include "TarnwickRender/CKVSceneNodeState.h"

namespace Kelvor {

// Which of the extra passes a node takes part in.
class CKVRenderOptionState : public CKVSceneNodeState
{
    KV_DECLARE_RUNTIME_CLASS(CKVRenderOptionState)
public:
    enum Option : unsigned int {
        kCastShadow = 1,
        kAmbientOcclusion = 2,
        kLightPropagation = 4,
        kWaterReflection = 8,
        kAllOptions = 15
    };

    // All options on: a node with the state takes part everywhere.
    CKVRenderOptionState() = default;
    ~CKVRenderOptionState() override;

    Type getType() const override { return kRenderOption; }
    CKVSceneNodeState* clone() const override { return new CKVRenderOptionState(*this); }

    bool hasRenderOption(Option option) const { return (mOptions & option) != 0u; }
    void addRenderOption(Option option);
    void removeRenderOption(Option option);

private:
    CKVRenderOptionState(CKVRenderOptionState const&) = default;

    unsigned int mOptions = kAllOptions;
};

} // namespace Kelvor
