#pragma once

#include "TarnwickCommon/kv_shared_ptr.h"
#include "TarnwickGeometry/CKVPoint3D.h"
#include "TarnwickRender/CKVRenderCommand.h"
#include "TarnwickRender/CKVSelectionResult.h"

namespace Kelvor {

// Asks what lies under a window pixel.
class CKVRCPickSelectObject : public CKVRenderCommand
{
    KV_DECLARE_RUNTIME_CLASS(CKVRCPickSelectObject)
public:
    explicit CKVRCPickSelectObject(CKVPoint3D const& pixel);
    ~CKVRCPickSelectObject() override;

    ID getID() const override;

    // In window pixels, y counted from the top, despite the name.
    CKVPoint3D const& getNDCPos() const { return mPixel; }
    // Set by the render thread when something was hit; the command keeps a
    // reference, and a result of count 0 is deleted with the command. Read it
    // once the command has been signalled. Null when nothing was hit.
    void setSelection(CKVSelectionResult const* selection);
    CKVSelectionResult const* getSelection() const { return mSelection.get(); }

private:
    CKVPoint3D mPixel;
    kv_shared_ptr<CKVSelectionResult const> mSelection;
};

} // namespace Kelvor
