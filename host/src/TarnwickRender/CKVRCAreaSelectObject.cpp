#include "TarnwickRender/CKVRCAreaSelectObject.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS(CKVRCAreaSelectObject, CKVRenderCommand)

CKVRCAreaSelectObject::CKVRCAreaSelectObject(CKVPoint3D const& corner1, CKVPoint3D const& corner2,
                                             unsigned int maxSelectionCount)
    : mCorner1(corner1), mCorner2(corner2), mMaxSelectionCount(maxSelectionCount)
{
}

CKVRCAreaSelectObject::~CKVRCAreaSelectObject() = default;

CKVRenderCommand::ID CKVRCAreaSelectObject::getID() const
{
    return kAreaSelectObject;
}

void CKVRCAreaSelectObject::getNDCPos(CKVPoint3D& corner1, CKVPoint3D& corner2) const
{
    corner1 = mCorner1;
    corner2 = mCorner2;
}

void CKVRCAreaSelectObject::setResult(CKVSelectionResult const* results, unsigned int count)
{
    mResults.clear();
    if (!results)
        return;
    mResults.assign(results, results + count);
}

CKVSelectionResult const* CKVRCAreaSelectObject::getResult(unsigned int index) const
{
    return index < mResults.size() ? &mResults[index] : nullptr;
}

} // namespace Kelvor
