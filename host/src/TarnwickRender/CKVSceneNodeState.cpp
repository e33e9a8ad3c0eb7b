#include "TarnwickRender/CKVSceneNodeState.h"

#include "TarnwickRender/CKVSceneNodeStateSet.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS(CKVSceneNodeState, CKVSharedObject)

// A copy is a new state: dirty, so that it is applied, and in no set.
CKVSceneNodeState::CKVSceneNodeState(CKVSceneNodeState const& other) : CKVSharedObject(other)
{
}

CKVSceneNodeState::~CKVSceneNodeState() = default;

void CKVSceneNodeState::dirty(bool flag)
{
    mDirty.store(flag, std::memory_order_release);
    if (!flag)
        return;
    if (CKVSceneNodeStateSet* owner = mOwner.load(std::memory_order_acquire))
        owner->stateChanged();
}

} // namespace Kelvor
