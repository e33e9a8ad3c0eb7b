#pragma once

#include "TarnwickCommon/kv_shared_ptr.h"
#include "TarnwickRender/CKVSceneNodeState.h"

#include <map>

namespace Kelvor {

class CKVSceneNode;

// The states of one scene node, at most one of each type. It belongs to its
// node and tells it when a state is added, removed or changed.
class CKVSceneNodeStateSet
{
public:
    explicit CKVSceneNodeStateSet(CKVSceneNode* owner);
    ~CKVSceneNodeStateSet();

    CKVSceneNodeStateSet(CKVSceneNodeStateSet const&) = delete;
    CKVSceneNodeStateSet& operator=(CKVSceneNodeStateSet const&) = delete;

    // Null when the node holds no state of that type: no restriction.
    CKVSceneNodeState* getState(CKVSceneNodeState::Type type);
    CKVSceneNodeState const* getState(CKVSceneNodeState::Type type) const;

    // Replaces a state of the same type. False for null, or for a state that
    // another set holds.
    bool addState(CKVSceneNodeState* state);
    bool removeState(CKVSceneNodeState::Type type);
    void removeAllStates();
    unsigned int getNumState() const { return static_cast<unsigned int>(mStates.size()); }

    // Replaces the content with clones of the other set's states.
    void copyFrom(CKVSceneNodeStateSet const& other);

private:
    friend class CKVSceneNodeState;

    void stateChanged();
    void detach(CKVSceneNodeState* state);

    CKVSceneNode* mOwner;
    std::map<int, kv_shared_ptr<CKVSceneNodeState>> mStates;
};

} // namespace Kelvor
