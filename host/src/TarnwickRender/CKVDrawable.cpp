#include "TarnwickRender/CKVDrawable.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS_DYNAMIC(CKVDrawable, CKVSharedObject)

CKVDrawable::~CKVDrawable() = default;

} // namespace Kelvor
