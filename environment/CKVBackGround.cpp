#include "environment/CKVBackGround.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS_DYNAMIC(CKVBackGround, CKVSharedObject)

CKVBackGround::CKVBackGround()
    : mNode(new CBGGeode)
{
}

CKVBackGround::~CKVBackGround() = default;

} // namespace Kelvor
