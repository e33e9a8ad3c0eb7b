#include "TarnwickRender/CKVAnimationResource.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS(CKVAnimationResource, CKVSharedObject)

CKVAnimationResource::~CKVAnimationResource() = default;

} // namespace Kelvor
