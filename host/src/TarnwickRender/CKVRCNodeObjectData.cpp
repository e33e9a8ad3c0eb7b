#include "TarnwickRender/CKVRCNodeObjectData.h"

#include "TarnwickRender/CKVSceneNode.h"

namespace Kelvor {

CKVRCNodeObjectData::CKVRCNodeObjectData(CKVSceneNode* node) : mNode(node)
{
}

CKVRCNodeObjectData::~CKVRCNodeObjectData() = default;

} // namespace Kelvor
