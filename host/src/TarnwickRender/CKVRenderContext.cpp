#include "TarnwickRender/CKVRenderContext.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS(CKVRenderContext, CKVObject)

CKVRenderContext::CKVRenderContext() = default;

CKVRenderContext::~CKVRenderContext() = default;

} // namespace Kelvor
