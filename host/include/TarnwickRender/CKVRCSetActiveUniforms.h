#pragma once

#include "TarnwickRender/CKVRenderCommand.h"

namespace Kelvor {

// Chooses which built-in uniforms the main view keeps up to date.
class CKVRCSetActiveUniforms : public CKVRenderCommand
{
    KV_DECLARE_RUNTIME_CLASS(CKVRCSetActiveUniforms)
public:
    explicit CKVRCSetActiveUniforms(int mask);
    ~CKVRCSetActiveUniforms() override;

    ID getID() const override;

    int getMask() const { return mMask; }

private:
    int mMask;
};

} // namespace Kelvor
