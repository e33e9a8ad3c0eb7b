#pragma once

#include "TarnwickRender/CKVAnimationResource.h"

namespace Kelvor {

// A skinned character read from one FBX file, with a named list of
// animation files that play on its skeleton. Reading files is the
// backend's; the host only drives the resource.
class CKVFBXAnimation : public CKVAnimationResource
{
    KV_DECLARE_RUNTIME_CLASS(CKVFBXAnimation)
public:
    ~CKVFBXAnimation() override;

    Type getType() const override { return kFBX; }

    // Reads the character. False when one is loaded already or the file
    // cannot be read.
    virtual bool load(char const* path) = 0;
    // Adds an animation file under a name. False before a character is
    // loaded or when the name is taken.
    virtual bool addAnimation(char const* name, char const* path) = 0;
    virtual unsigned int getAnimationCount() const = 0;
    // The empty string for an index out of range.
    virtual char const* getAnimationName(unsigned int index) const = 0;

protected:
    CKVFBXAnimation() = default;
};

} // namespace Kelvor
