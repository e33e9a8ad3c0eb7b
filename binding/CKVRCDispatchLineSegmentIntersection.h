#pragma once

#include "TarnwickRender/CKVRenderCommandDispatch.h"

namespace Kelvor {

// Intersects a world line segment with the scene. A segment that hits
// nothing leaves the command's selection unset.
class CKVRCDispatchLineSegmentIntersection : public CKVRenderCommandDispatch
{
    KV_DECLARE_RUNTIME_CLASS(CKVRCDispatchLineSegmentIntersection)
public:
    CKVRCDispatchLineSegmentIntersection();
    ~CKVRCDispatchLineSegmentIntersection() override;

    bool dispatch(CKVRenderContext* context, CKVRenderCommand& command) override;
};

} // namespace Kelvor
