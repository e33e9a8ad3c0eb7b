#include "TarnwickRender/CKVRCSetViewPort.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS(CKVRCSetViewPort, CKVRenderCommand)

CKVRCSetViewPort::CKVRCSetViewPort(int width, int height)
    : mViewPort(width, height)
{
}

CKVRCSetViewPort::~CKVRCSetViewPort() = default;

CKVRenderCommand::ID CKVRCSetViewPort::getID() const
{
    return kSetViewPort;
}

} // namespace Kelvor
