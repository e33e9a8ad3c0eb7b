#include "TarnwickRender/CKVRCRemoveAllRenderObject.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS(CKVRCRemoveAllRenderObject, CKVRenderCommand)

CKVRCRemoveAllRenderObject::CKVRCRemoveAllRenderObject(CKVSceneNode* node)
    : CKVRCNodeObjectData(node)
{
}

CKVRCRemoveAllRenderObject::~CKVRCRemoveAllRenderObject() = default;

CKVRenderCommand::ID CKVRCRemoveAllRenderObject::getID() const
{
    return kRemoveAllRenderObject;
}

} // namespace Kelvor
