#include "TarnwickRender/CKVRCLineSegmentIntersection.h"

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS(CKVRCLineSegmentIntersection, CKVRenderCommand)

CKVRCLineSegmentIntersection::CKVRCLineSegmentIntersection(CKVLineSeg const& segment)
    : mSegment(segment)
{
}

CKVRCLineSegmentIntersection::~CKVRCLineSegmentIntersection() = default;

CKVRenderCommand::ID CKVRCLineSegmentIntersection::getID() const
{
    return kLineSegmentIntersection;
}

void CKVRCLineSegmentIntersection::setSelection(CKVSelectionResult const* selection)
{
    mSelection = selection;
}

} // namespace Kelvor
