#pragma once

#include "TarnwickCommon/CKVVec.h"
#include "TarnwickRender/CKVRenderCommand.h"

#include <vector>

namespace Kelvor {

// Replaces the clip planes of the section test; no planes turn it off.
class CKVRCUpdateClipTest : public CKVRenderCommand
{
    KV_DECLARE_RUNTIME_CLASS(CKVRCUpdateClipTest)
public:
    CKVRCUpdateClipTest(CKVVec4<float> const* planes, unsigned int count);
    ~CKVRCUpdateClipTest() override;

    ID getID() const override;

    unsigned int getNumClipTestPlanes() const { return static_cast<unsigned int>(mPlanes.size()); }
    // Each plane is (a, b, c, d) with a x + b y + c z + d = 0; null without planes.
    CKVVec4<float> const* getClipTestPlanesArr() const { return mPlanes.empty() ? nullptr : mPlanes.data(); }

private:
    std::vector<CKVVec4<float>> mPlanes;
};

} // namespace Kelvor
