#include "TarnwickRender/CKVRenderCommandDispatchMgr.h"

#include "TarnwickRender/CKVRenderCallback.h"
#include "TarnwickRender/CKVRenderCommand.h"

namespace Kelvor {

CKVRenderCommandDispatchMgr::CKVRenderCommandDispatchMgr() = default;

CKVRenderCommandDispatchMgr::~CKVRenderCommandDispatchMgr() = default;

bool CKVRenderCommandDispatchMgr::dispatch(CKVRenderContext* context, CKVRenderCommand& command)
{
    CKVRenderCommandDispatch* dispatcher = command.getDispatch();
    if (!dispatcher)
        dispatcher = dispatchFor(static_cast<unsigned int>(command.getID()));
    return dispatcher && dispatcher->dispatch(context, command);
}

void CKVRenderCommandDispatchMgr::clear()
{
    mDispatches.clear();
}

CKVRenderCommandDispatch* CKVRenderCommandDispatchMgr::dispatchFor(unsigned int id)
{
    auto it = mDispatches.find(id);
    if (it != mDispatches.end())
        return it->second.get();
    // A null answer is not kept: the factory may be registered later.
    CKVRenderCommandDispatch* created = CKVRenderCallback::createRenderCommandDispatch(id);
    if (!created)
        return nullptr;
    mDispatches[id] = created;
    return created;
}

} // namespace Kelvor
