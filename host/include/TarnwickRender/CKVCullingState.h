#pragma once

#include "TarnwickRender/CKVSceneNodeState.h"
#include "TarnwickStream/CKVRenderLOD.h"

namespace Kelvor {

// Distance or screen-size culling of a node, or, with culling-child set,
// the choice of one child level by the children's own ranges. A value is
// inside a range when minimum <= value < maximum.
class CKVCullingState : public CKVSceneNodeState
{
    KV_DECLARE_RUNTIME_CLASS(CKVCullingState)
public:
    CKVCullingState() = default;
    ~CKVCullingState() override;

    Type getType() const override { return kCulling; }
    CKVSceneNodeState* clone() const override { return new CKVCullingState(*this); }

    CKVRenderLOD::LoadMode getCullingMode() const { return mMode; }
    void setCullingMode(CKVRenderLOD::LoadMode mode);
    bool getCullingChild() const { return mCullingChild; }
    void setCullingChild(bool cullingChild);
    float getMinDistance() const { return mMinDistance; }
    float getMaxDistance() const { return mMaxDistance; }
    void setDistance(float minimum, float maximum);

private:
    CKVCullingState(CKVCullingState const&) = default;

    CKVRenderLOD::LoadMode mMode = CKVRenderLOD::kNone;
    bool mCullingChild = false;
    float mMinDistance = 0.0f;
    float mMaxDistance = 3.402823466e+38f;
};

} // namespace Kelvor
