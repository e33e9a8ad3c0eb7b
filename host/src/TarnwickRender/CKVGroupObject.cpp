#include "TarnwickRender/CKVGroupObject.h"

#include "TarnwickRender/CKVSceneNode.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS_DYNAMIC(CKVGroupObject, CKVRenderObject)

CKVGroupObject::CKVGroupObject() = default;

CKVGroupObject::CKVGroupObject(CKVSceneNode* node) : mNode(node)
{
}

CKVGroupObject::~CKVGroupObject() = default;

CKVBndBox CKVGroupObject::computeBoundingBox() const
{
    return mNode ? mNode->computeBoundingBox() : CKVBndBox();
}

CKVSceneNode* CKVGroupObject::getNodeObject() const
{
    return mNode.get();
}

void CKVGroupObject::setNodeObject(CKVSceneNode* node)
{
    mNode = node;
}

} // namespace Kelvor
