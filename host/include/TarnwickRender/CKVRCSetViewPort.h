#pragma once

#include "TarnwickCommon/CKVVec.h"
#include "TarnwickRender/CKVRenderCommand.h"

namespace Kelvor {

// Resizes the render context's viewport, in pixels.
class CKVRCSetViewPort : public CKVRenderCommand
{
    KV_DECLARE_RUNTIME_CLASS(CKVRCSetViewPort)
public:
    CKVRCSetViewPort(int width, int height);
    ~CKVRCSetViewPort() override;

    ID getID() const override;

    // x is the width, y the height.
    CKVVec2<int> const& getViewPort() const { return mViewPort; }

private:
    CKVVec2<int> mViewPort;
};

} // namespace Kelvor
