#pragma once

#include "TarnwickCommon/CKVSharedObject.h"

namespace Kelvor {

class CKVRenderCommand;
class CKVRenderContext;

// Carries out one kind of render command on the render thread. The backend
// supplies one subclass per command id through the dispatch factory.
class CKVRenderCommandDispatch : public CKVSharedObject
{
    KV_DECLARE_RUNTIME_CLASS(CKVRenderCommandDispatch)
public:
    ~CKVRenderCommandDispatch() override;

    // False when the command could not be carried out; the command is still
    // signalled by the caller.
    virtual bool dispatch(CKVRenderContext* context, CKVRenderCommand& command) = 0;

protected:
    CKVRenderCommandDispatch();
};

} // namespace Kelvor
