#pragma once

#include "TarnwickCommon/kv_shared_ptr.h"
#include "TarnwickGeometry/CKVLineSeg.h"
#include "TarnwickRender/CKVRenderCommand.h"
#include "TarnwickRender/CKVSelectionResult.h"

namespace Kelvor {

// Asks for the first object that a world line segment meets.
class CKVRCLineSegmentIntersection : public CKVRenderCommand
{
    KV_DECLARE_RUNTIME_CLASS(CKVRCLineSegmentIntersection)
public:
    explicit CKVRCLineSegmentIntersection(CKVLineSeg const& segment);
    ~CKVRCLineSegmentIntersection() override;

    ID getID() const override;

    CKVLineSeg const& getLineSegment() const { return mSegment; }
    // Set by the render thread when something was hit; the command keeps a
    // reference, and a result of count 0 is deleted with the command. Read it
    // once the command has been signalled. Null when nothing was hit.
    void setSelection(CKVSelectionResult const* selection);
    CKVSelectionResult const* getSelection() const { return mSelection.get(); }

private:
    CKVLineSeg mSegment;
    kv_shared_ptr<CKVSelectionResult const> mSelection;
};

} // namespace Kelvor
