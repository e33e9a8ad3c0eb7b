#include "TarnwickRender/CKVEvent.h"

namespace Kelvor {

CKVEvent::CKVEvent(CKVScene* scene) : mScene(scene)
{
}

CKVEvent::CKVEvent(CKVEvent const& other) = default;

CKVEvent& CKVEvent::operator=(CKVEvent const& other) = default;

CKVEvent::~CKVEvent() = default;

void CKVEvent::setNDCSize(int width, int height)
{
    mNDCWidth = width;
    mNDCHeight = height;
}

void CKVEvent::setWorldPos(CKVPoint3D const& position)
{
    mWorldPos = position;
    mHasWorldPos = true;
}

void CKVEvent::setSelectRay(CKVRay3D const& ray)
{
    mSelectRay = ray;
    mHasSelectRay = true;
}

} // namespace Kelvor
