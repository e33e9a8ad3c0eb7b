#include "TarnwickRender/CKVRenderObject.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS(CKVRenderObject, CKVSharedObject)

CKVRenderObject::~CKVRenderObject() = default;

CKVBndBox CKVRenderObject::computeBoundingBox() const
{
    return CKVBndBox();
}

void CKVRenderObject::getProgramParam(CKVProgramParam&) const
{
}

} // namespace Kelvor
