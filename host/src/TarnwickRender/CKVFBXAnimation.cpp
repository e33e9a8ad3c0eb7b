#include "TarnwickRender/CKVFBXAnimation.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS(CKVFBXAnimation, CKVAnimationResource)

CKVFBXAnimation::~CKVFBXAnimation() = default;

} // namespace Kelvor
