#include "TarnwickRender/CKVRCInsertRenderObject.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS(CKVRCInsertRenderObject, CKVRenderCommand)

CKVRCInsertRenderObject::CKVRCInsertRenderObject(CKVSceneNode* node, CKVRenderObject* object)
    : CKVRCNodeObjectData(node), CKVRCRenderObjectData(object)
{
}

CKVRCInsertRenderObject::~CKVRCInsertRenderObject() = default;

CKVRenderCommand::ID CKVRCInsertRenderObject::getID() const
{
    return kInsertRenderObject;
}

} // namespace Kelvor
