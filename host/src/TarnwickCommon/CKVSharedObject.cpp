#include "TarnwickCommon/CKVSharedObject.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS_DYNAMIC(CKVSharedObject, CKVObject)

} // namespace Kelvor
