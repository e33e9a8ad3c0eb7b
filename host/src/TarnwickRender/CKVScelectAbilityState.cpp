#include "TarnwickRender/CKVScelectAbilityState.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS_DYNAMIC(CKVScelectAbilityState, CKVSceneNodeState)

CKVScelectAbilityState::~CKVScelectAbilityState() = default;

void CKVScelectAbilityState::addSelectAbility(CKVVisibilityState::Mode mode)
{
    mModes |= mode;
    dirty(true);
}

void CKVScelectAbilityState::removeSelectAbility(CKVVisibilityState::Mode mode)
{
    mModes &= ~static_cast<unsigned int>(mode);
    dirty(true);
}

} // namespace Kelvor
