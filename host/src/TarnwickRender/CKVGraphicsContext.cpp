#include "TarnwickRender/CKVGraphicsContext.h"

namespace Kelvor {

CKVGraphicsContext::CKVGraphicsContext() = default;

CKVGraphicsContext::CKVGraphicsContext(CKVWindowData const* windowData, CKVScene* scene)
    : mWindowData(windowData), mScene(scene)
{
}

} // namespace Kelvor
