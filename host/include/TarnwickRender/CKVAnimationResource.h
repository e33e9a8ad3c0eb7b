#pragma once

#include "TarnwickCommon/CKVSharedObject.h"

namespace Kelvor {

// A resource that animates what a scene node shows. Made by the backend's
// factory from a type number.
class CKVAnimationResource : public CKVSharedObject
{
    KV_DECLARE_RUNTIME_CLASS(CKVAnimationResource)
public:
    enum Type : unsigned int { kFBX = 1 };

    ~CKVAnimationResource() override;

    virtual Type getType() const = 0;

protected:
    CKVAnimationResource() = default;
};

} // namespace Kelvor
