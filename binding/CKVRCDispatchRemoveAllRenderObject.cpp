#include "binding/CKVRCDispatchRemoveAllRenderObject.h"

#include "binding/CKVRCDispatchChecks.h"
#include "scene/CKVSceneNodeImp.h"

#include "TarnwickRender/CKVRCRemoveAllRenderObject.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS_DYNAMIC(CKVRCDispatchRemoveAllRenderObject, CKVRenderCommandDispatch)

CKVRCDispatchRemoveAllRenderObject::CKVRCDispatchRemoveAllRenderObject() = default;

CKVRCDispatchRemoveAllRenderObject::~CKVRCDispatchRemoveAllRenderObject() = default;

bool CKVRCDispatchRemoveAllRenderObject::dispatch(CKVRenderContext*, CKVRenderCommand& command)
{
    auto* record = CKVRCDispatchChecks::record<CKVRCRemoveAllRenderObject>(command);
    CKVSceneNodeImp* node = record ? CKVRCDispatchChecks::sceneNode(record->getNodeObject()) : nullptr;
    if (!node)
        return false;
    node->removeAllRenderObject();
    return true;
}

} // namespace Kelvor
