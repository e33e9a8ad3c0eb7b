#include "binding/CKVRCDispatchUpdateClipTest.h"

#include "binding/CKVRCDispatchChecks.h"
#include "binding/CKVRenderContextImp.h"

#include "TarnwickRender/CKVRCUpdateClipTest.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS_DYNAMIC(CKVRCDispatchUpdateClipTest, CKVRenderCommandDispatch)

CKVRCDispatchUpdateClipTest::CKVRCDispatchUpdateClipTest() = default;

CKVRCDispatchUpdateClipTest::~CKVRCDispatchUpdateClipTest() = default;

bool CKVRCDispatchUpdateClipTest::dispatch(CKVRenderContext* context, CKVRenderCommand& command)
{
    CKVRenderContextImp* imp = CKVRCDispatchChecks::context(context);
    auto* record = CKVRCDispatchChecks::record<CKVRCUpdateClipTest>(command);
    if (!imp || !record)
        return false;
    return imp->updateClipTest(record->getClipTestPlanesArr(), record->getNumClipTestPlanes());
}

} // namespace Kelvor
