#include "TarnwickRender/CKVGraphicsModelField.h"

#include "TarnwickRender/CKVSceneNode.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS_DYNAMIC(CKVGraphicsModelField, CKVSharedObject)

CKVGraphicsModelField::CKVGraphicsModelField(CKVSceneNode* node) : mNode(node)
{
}

CKVGraphicsModelField::~CKVGraphicsModelField() = default;

void CKVGraphicsModelField::setNodeObject(CKVSceneNode* node)
{
    mNode = node;
}

} // namespace Kelvor
