#pragma once

#include "TarnwickCommon/CKVSharedObject.h"

namespace Kelvor {

// What the user sees as one thing of the model (a wall, a window, a label).
// Logic render objects point at it, and a pick answers with it.
class CKVDrawable : public CKVSharedObject
{
    KV_DECLARE_RUNTIME_CLASS(CKVDrawable)
public:
    CKVDrawable() = default;
    explicit CKVDrawable(unsigned long long id) : mId(id) {}
    ~CKVDrawable() override;

    // The host's identifier of the model element; 0 when it has none.
    unsigned long long getId() const { return mId; }
    void setId(unsigned long long id) { mId = id; }

private:
    unsigned long long mId = 0;
};

} // namespace Kelvor
