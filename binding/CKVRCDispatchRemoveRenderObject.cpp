#include "binding/CKVRCDispatchRemoveRenderObject.h"

#include "binding/CKVRCDispatchChecks.h"
#include "scene/CKVSceneNodeImp.h"

#include "TarnwickRender/CKVRCRemoveRenderObject.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS_DYNAMIC(CKVRCDispatchRemoveRenderObject, CKVRenderCommandDispatch)

CKVRCDispatchRemoveRenderObject::CKVRCDispatchRemoveRenderObject() = default;

CKVRCDispatchRemoveRenderObject::~CKVRCDispatchRemoveRenderObject() = default;

bool CKVRCDispatchRemoveRenderObject::dispatch(CKVRenderContext*, CKVRenderCommand& command)
{
    auto* record = CKVRCDispatchChecks::record<CKVRCRemoveRenderObject>(command);
    CKVSceneNodeImp* node = record ? CKVRCDispatchChecks::sceneNode(record->getNodeObject()) : nullptr;
    if (!node)
        return false;
    return node->removeRenderObject(record->getRenderObject());
}

} // namespace Kelvor
