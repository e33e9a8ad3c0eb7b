#pragma once

#include "TarnwickCommon/CKVAString.h"
#include "TarnwickCommon/kv_shared_ptr.h"
#include "TarnwickRender/CKVRCNodeObjectData.h"
#include "TarnwickRender/CKVRenderCommand.h"

namespace Kelvor {

class CKVAnimationResource;
class CKVSceneNode;

// Attaches, detaches or drives an animation resource on a scene node.
class CKVRCAnimationResOperator : public CKVRenderCommand, public CKVRCNodeObjectData
{
    KV_DECLARE_RUNTIME_CLASS(CKVRCAnimationResOperator)
public:
    enum Op : int { kNone = 0, kAttach = 1, kDetach = 2, kSetActiveAnimation = 3, kStop = 4 };

    CKVRCAnimationResOperator(CKVSceneNode* node, CKVAnimationResource* resource, Op op,
                              char const* activeAnimation = nullptr);
    ~CKVRCAnimationResOperator() override;

    ID getID() const override;

    Op getOp() const { return mOp; }
    CKVAnimationResource* getAnimationRes() const { return mResource.get(); }
    // The animation's name, for kSetActiveAnimation.
    char const* getActiveAnimation() const { return mActiveAnimation.c_str(); }

private:
    Op mOp;
    kv_shared_ptr<CKVAnimationResource> mResource;
    CKVAString mActiveAnimation;
};

} // namespace Kelvor
