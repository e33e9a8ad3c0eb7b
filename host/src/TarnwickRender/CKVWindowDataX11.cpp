#include "TarnwickRender/CKVWindowDataX11.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS_DYNAMIC(CKVWindowDataX11, CKVWindowData)

CKVWindowDataX11::CKVWindowDataX11() = default;

CKVWindowDataX11::CKVWindowDataX11(void* display, unsigned long window, int width, int height)
    : CKVWindowData(width, height), mDisplay(display), mWindow(window)
{
}

CKVWindowDataX11::~CKVWindowDataX11() = default;

} // namespace Kelvor
