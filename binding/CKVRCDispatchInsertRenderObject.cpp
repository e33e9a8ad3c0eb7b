#include "binding/CKVRCDispatchInsertRenderObject.h"

#include "binding/CKVRCDispatchChecks.h"
#include "scene/CKVSceneNodeImp.h"

#include "TarnwickRender/CKVRCInsertRenderObject.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS_DYNAMIC(CKVRCDispatchInsertRenderObject, CKVRenderCommandDispatch)

CKVRCDispatchInsertRenderObject::CKVRCDispatchInsertRenderObject() = default;

CKVRCDispatchInsertRenderObject::~CKVRCDispatchInsertRenderObject() = default;

bool CKVRCDispatchInsertRenderObject::dispatch(CKVRenderContext*, CKVRenderCommand& command)
{
    auto* record = CKVRCDispatchChecks::record<CKVRCInsertRenderObject>(command);
    CKVSceneNodeImp* node = record ? CKVRCDispatchChecks::sceneNode(record->getNodeObject()) : nullptr;
    if (!node)
        return false;
    return node->addRenderObject(record->getRenderObject());
}

} // namespace Kelvor
