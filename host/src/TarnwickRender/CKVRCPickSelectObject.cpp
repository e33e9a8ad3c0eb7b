#include "TarnwickRender/CKVRCPickSelectObject.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS(CKVRCPickSelectObject, CKVRenderCommand)

CKVRCPickSelectObject::CKVRCPickSelectObject(CKVPoint3D const& pixel)
    : mPixel(pixel)
{
}

CKVRCPickSelectObject::~CKVRCPickSelectObject() = default;

CKVRenderCommand::ID CKVRCPickSelectObject::getID() const
{
    return kPickSelectObject;
}

void CKVRCPickSelectObject::setSelection(CKVSelectionResult const* selection)
{
    mSelection = selection;
}

} // namespace Kelvor
