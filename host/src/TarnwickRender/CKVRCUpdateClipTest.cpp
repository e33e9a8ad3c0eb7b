#include "TarnwickRender/CKVRCUpdateClipTest.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS(CKVRCUpdateClipTest, CKVRenderCommand)

CKVRCUpdateClipTest::CKVRCUpdateClipTest(CKVVec4<float> const* planes, unsigned int count)
{
    if (planes)
        mPlanes.assign(planes, planes + count);
}

CKVRCUpdateClipTest::~CKVRCUpdateClipTest() = default;

CKVRenderCommand::ID CKVRCUpdateClipTest::getID() const
{
    return kUpdateClipTest;
}

} // namespace Kelvor
