#include "TarnwickRender/CKVRCRemoveRenderObject.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS(CKVRCRemoveRenderObject, CKVRenderCommand)

CKVRCRemoveRenderObject::CKVRCRemoveRenderObject(CKVSceneNode* node, CKVRenderObject* object)
    : CKVRCNodeObjectData(node), CKVRCRenderObjectData(object)
{
}

CKVRCRemoveRenderObject::~CKVRCRemoveRenderObject() = default;

CKVRenderCommand::ID CKVRCRemoveRenderObject::getID() const
{
    return kRemoveRenderObject;
}

} // namespace Kelvor
