#pragma once

#include "TarnwickCommon/kv_shared_ptr.h"
#include "TarnwickRender/CKVRenderCommandDispatch.h"

#include <map>

namespace Kelvor {

class CKVRenderCommand;
class CKVRenderContext;

// Finds and runs the dispatch object of a command. A command that carries its
// own dispatch object uses it; otherwise the object for the command's id comes
// from the dispatch factory registered with CKVRenderCallback and is kept for
// later commands of that id. Used on the render thread only.
class CKVRenderCommandDispatchMgr
{
public:
    CKVRenderCommandDispatchMgr();
    ~CKVRenderCommandDispatchMgr();

    CKVRenderCommandDispatchMgr(CKVRenderCommandDispatchMgr const&) = delete;
    CKVRenderCommandDispatchMgr& operator=(CKVRenderCommandDispatchMgr const&) = delete;

    // False when no dispatch object exists for the command or when the
    // dispatch itself fails.
    bool dispatch(CKVRenderContext* context, CKVRenderCommand& command);

    // Drops the kept dispatch objects, e.g. before the factory goes away.
    void clear();

private:
    CKVRenderCommandDispatch* dispatchFor(unsigned int id);

    std::map<unsigned int, kv_shared_ptr<CKVRenderCommandDispatch>> mDispatches;
};

} // namespace Kelvor
