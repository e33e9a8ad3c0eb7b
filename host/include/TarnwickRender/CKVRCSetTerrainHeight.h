#pragma once

#include "TarnwickRender/CKVRenderCommand.h"

namespace Kelvor {

// Sets the ground height that the sky and atmosphere assume, in metres.
class CKVRCSetTerrainHeight : public CKVRenderCommand
{
    KV_DECLARE_RUNTIME_CLASS(CKVRCSetTerrainHeight)
public:
    explicit CKVRCSetTerrainHeight(float height);
    ~CKVRCSetTerrainHeight() override;

    ID getID() const override;

    float getHeight() const { return mHeight; }

private:
    float mHeight;
};

} // namespace Kelvor
