#include "TarnwickRender/CKVSceneNodeStateSet.h"

#include "TarnwickRender/CKVSceneNode.h"

namespace Kelvor {

CKVSceneNodeStateSet::CKVSceneNodeStateSet(CKVSceneNode* owner) : mOwner(owner)
{
}

CKVSceneNodeStateSet::~CKVSceneNodeStateSet()
{
    // States may outlive the node in other holders; they must not call back.
    for (auto& entry : mStates)
        detach(entry.second.get());
}

CKVSceneNodeState* CKVSceneNodeStateSet::getState(CKVSceneNodeState::Type type)
{
    auto it = mStates.find(type);
    return it == mStates.end() ? nullptr : it->second.get();
}

CKVSceneNodeState const* CKVSceneNodeStateSet::getState(CKVSceneNodeState::Type type) const
{
    auto it = mStates.find(type);
    return it == mStates.end() ? nullptr : it->second.get();
}

bool CKVSceneNodeStateSet::addState(CKVSceneNodeState* state)
{
    if (!state)
        return false;
    CKVSceneNodeStateSet* expected = nullptr;
    if (!state->mOwner.compare_exchange_strong(expected, this, std::memory_order_acq_rel)) {
        // Adding a state the set holds already only asks for it to be reapplied.
        if (expected != this)
            return false;
        state->dirty(true);
        return true;
    }

    kv_shared_ptr<CKVSceneNodeState>& slot = mStates[state->getType()];
    if (slot)
        detach(slot.get());
    slot = state;
    // A state that arrives must be applied even if it was applied elsewhere.
    state->dirty(true);
    return true;
}

bool CKVSceneNodeStateSet::removeState(CKVSceneNodeState::Type type)
{
    auto it = mStates.find(type);
    if (it == mStates.end())
        return false;
    detach(it->second.get());
    mStates.erase(it);
    // The backend has to undo what the state did.
    stateChanged();
    return true;
}

void CKVSceneNodeStateSet::removeAllStates()
{
    if (mStates.empty())
        return;
    for (auto& entry : mStates)
        detach(entry.second.get());
    mStates.clear();
    stateChanged();
}

void CKVSceneNodeStateSet::copyFrom(CKVSceneNodeStateSet const& other)
{
    if (&other == this)
        return;
    for (auto& entry : mStates)
        detach(entry.second.get());
    mStates.clear();
    for (auto const& entry : other.mStates)
        addState(entry.second->clone());
    stateChanged();
}

void CKVSceneNodeStateSet::stateChanged()
{
    if (mOwner)
        mOwner->addUpdateMode(CKVSceneNode::kStatesChanged);
}

void CKVSceneNodeStateSet::detach(CKVSceneNodeState* state)
{
    CKVSceneNodeStateSet* expected = this;
    state->mOwner.compare_exchange_strong(expected, nullptr, std::memory_order_acq_rel);
}

} // namespace Kelvor
