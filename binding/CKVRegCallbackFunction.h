#pragma once

#include "TarnwickCommon/CKVSharedObject.h"

namespace Kelvor {

// Alive from the library's load to its unload: its construction registers
// the backend's object factories and model importers with the host, its
// destruction removes them again.
class CKVRegCallbackFunction : public CKVSharedObject
{
    KV_DECLARE_RUNTIME_CLASS(CKVRegCallbackFunction)
public:
    CKVRegCallbackFunction();
    ~CKVRegCallbackFunction() override;

    CKVRegCallbackFunction(CKVRegCallbackFunction const&) = delete;
    CKVRegCallbackFunction& operator=(CKVRegCallbackFunction const&) = delete;
};

} // namespace Kelvor
