#pragma once

#include "TarnwickCommon/CKVSharedObject.h"

#include <atomic>

namespace Kelvor {

class CKVSceneNodeStateSet;

// One typed state of a scene node. A change made by the host marks the state
// dirty, and through its state set tells the node that its states changed;
// the backend applies the state and clears the flag with dirty(false).
class CKVSceneNodeState : public CKVSharedObject
{
    KV_DECLARE_RUNTIME_CLASS(CKVSceneNodeState)
public:
    enum Type : int {
        kVisibility = 1,
        kSelectAbility = 2,
        kTransform = 3,
        kMaterial = 4,
        kRenderOption = 6,
        kCulling = 7
    };

    ~CKVSceneNodeState() override;

    virtual Type getType() const = 0;
    // A new state of the same class and content, dirty and in no state set.
    virtual CKVSceneNodeState* clone() const = 0;

    bool isDirty() const { return mDirty.load(std::memory_order_acquire); }
    // true also marks the holding node's states as changed.
    void dirty(bool flag);

protected:
    // A new state is dirty: it has never been applied.
    CKVSceneNodeState() = default;
    CKVSceneNodeState(CKVSceneNodeState const& other);
    CKVSceneNodeState& operator=(CKVSceneNodeState const&) = delete;

private:
    friend class CKVSceneNodeStateSet;

    std::atomic<bool> mDirty{true};
    std::atomic<CKVSceneNodeStateSet*> mOwner{nullptr};
};

} // namespace Kelvor
