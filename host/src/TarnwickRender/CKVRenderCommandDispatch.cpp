#include "TarnwickRender/CKVRenderCommandDispatch.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS(CKVRenderCommandDispatch, CKVSharedObject)

CKVRenderCommandDispatch::CKVRenderCommandDispatch() = default;

CKVRenderCommandDispatch::~CKVRenderCommandDispatch() = default;

} // namespace Kelvor
