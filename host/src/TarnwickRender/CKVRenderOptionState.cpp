#include "TarnwickRender/CKVRenderOptionState.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS_DYNAMIC(CKVRenderOptionState, CKVSceneNodeState)

CKVRenderOptionState::~CKVRenderOptionState() = default;

void CKVRenderOptionState::addRenderOption(Option option)
{
    mOptions |= option;
    dirty(true);
}

void CKVRenderOptionState::removeRenderOption(Option option)
{
    mOptions &= ~static_cast<unsigned int>(option);
    dirty(true);
}

} // namespace Kelvor
