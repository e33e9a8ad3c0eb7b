#include "TarnwickRender/CKVWindowData.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS_DYNAMIC(CKVWindowData, CKVObject)

CKVWindowData::CKVWindowData() = default;

CKVWindowData::CKVWindowData(int width, int height) : mWidth(width), mHeight(height)
{
}

CKVWindowData::~CKVWindowData() = default;

} // namespace Kelvor
