#include "TarnwickRender/CKVLogicRenderObject.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS_DYNAMIC(CKVLogicRenderObject, CKVSharedObject)

CKVLogicRenderObject::~CKVLogicRenderObject() = default;

} // namespace Kelvor
