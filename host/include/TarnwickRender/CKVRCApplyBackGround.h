#pragma once

#include "TarnwickRender/CKVBackGroundConfig.h"
#include "TarnwickRender/CKVRenderCommand.h"

namespace Kelvor {

// Applies a copy of a background configuration. Its id lies outside the
// dispatched range: a background normally reaches the render context as part
// of a render configuration.
class CKVRCApplyBackGround : public CKVRenderCommand
{
    KV_DECLARE_RUNTIME_CLASS(CKVRCApplyBackGround)
public:
    explicit CKVRCApplyBackGround(CKVBackGroundConfig const& config);
    ~CKVRCApplyBackGround() override;

    ID getID() const override;

    CKVBackGroundConfig const& getBackGround() const { return mConfig; }

private:
    CKVBackGroundConfig mConfig;
};

} // namespace Kelvor
