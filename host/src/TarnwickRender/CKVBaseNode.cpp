#include "TarnwickRender/CKVBaseNode.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS(CKVBaseNode, CKVSharedObject)

CKVBaseNode::~CKVBaseNode() = default;

} // namespace Kelvor
