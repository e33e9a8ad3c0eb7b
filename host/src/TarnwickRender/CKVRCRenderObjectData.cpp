#include "TarnwickRender/CKVRCRenderObjectData.h"

#include "TarnwickRender/CKVRenderObject.h"

namespace Kelvor {

CKVRCRenderObjectData::CKVRCRenderObjectData(CKVRenderObject* object) : mRenderObject(object)
{
}

CKVRCRenderObjectData::~CKVRCRenderObjectData() = default;

} // namespace Kelvor
