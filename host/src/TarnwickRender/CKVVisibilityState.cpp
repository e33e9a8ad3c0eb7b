#include "TarnwickRender/CKVVisibilityState.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS_DYNAMIC(CKVVisibilityState, CKVSceneNodeState)

CKVVisibilityState::~CKVVisibilityState() = default;

void CKVVisibilityState::addVisibility(Mode mode)
{
    mModes |= mode;
    dirty(true);
}

void CKVVisibilityState::removeVisibility(Mode mode)
{
    mModes &= ~static_cast<unsigned int>(mode);
    dirty(true);
}

} // namespace Kelvor
