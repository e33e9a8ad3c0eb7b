#pragma once

#include "TarnwickCommon/CKVAString.h"
#include "TarnwickCommon/CKVSharedObject.h"

namespace Kelvor {

// A named shared object; the base of the host's scene nodes.
class CKVBaseNode : public CKVSharedObject
{
    KV_DECLARE_RUNTIME_CLASS(CKVBaseNode)
public:
    ~CKVBaseNode() override;

    char const* getName() const { return mName.c_str(); }
    void setName(char const* name) { mName = name; }

protected:
    CKVBaseNode() = default;
    CKVBaseNode(CKVBaseNode const&) = default;
    CKVBaseNode& operator=(CKVBaseNode const&) = default;

private:
    CKVAString mName;
};

} // namespace Kelvor
