#include "TarnwickRender/CKVCullingState.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS_DYNAMIC(CKVCullingState, CKVSceneNodeState)

CKVCullingState::~CKVCullingState() = default;

void CKVCullingState::setCullingMode(CKVRenderLOD::LoadMode mode)
{
    mMode = mode;
    dirty(true);
}

void CKVCullingState::setCullingChild(bool cullingChild)
{
    mCullingChild = cullingChild;
    dirty(true);
}

void CKVCullingState::setDistance(float minimum, float maximum)
{
    mMinDistance = minimum;
    mMaxDistance = maximum;
    dirty(true);
}

} // namespace Kelvor
