#include "binding/CKVRCDispatchSetActiveUniforms.h"

#include "binding/CKVRCDispatchChecks.h"
#include "binding/CKVRenderContextImp.h"

#include "TarnwickRender/CKVRCSetActiveUniforms.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS_DYNAMIC(CKVRCDispatchSetActiveUniforms, CKVRenderCommandDispatch)

CKVRCDispatchSetActiveUniforms::CKVRCDispatchSetActiveUniforms() = default;

CKVRCDispatchSetActiveUniforms::~CKVRCDispatchSetActiveUniforms() = default;

bool CKVRCDispatchSetActiveUniforms::dispatch(CKVRenderContext* context, CKVRenderCommand& command)
{
    CKVRenderContextImp* imp = CKVRCDispatchChecks::context(context);
    auto* record = CKVRCDispatchChecks::record<CKVRCSetActiveUniforms>(command);
    if (!imp || !record)
        return false;
    return imp->setActiveUniforms(record->getMask());
}

} // namespace Kelvor
