#pragma once

#include "TarnwickGeometry/CKVPoint3D.h"
#include "TarnwickRender/CKVRenderCommand.h"
#include "TarnwickRender/CKVSelectionResult.h"

#include <vector>

namespace Kelvor {

// Asks for the objects inside a window rectangle.
class CKVRCAreaSelectObject : public CKVRenderCommand
{
    KV_DECLARE_RUNTIME_CLASS(CKVRCAreaSelectObject)
public:
    CKVRCAreaSelectObject(CKVPoint3D const& corner1, CKVPoint3D const& corner2, unsigned int maxSelectionCount);
    ~CKVRCAreaSelectObject() override;

    ID getID() const override;

    // Opposite corners in window pixels, y counted from the top.
    void getNDCPos(CKVPoint3D& corner1, CKVPoint3D& corner2) const;
    CKVPoint3D const& getNDCPos1() const { return mCorner1; }
    CKVPoint3D const& getNDCPos2() const { return mCorner2; }
    unsigned int getMaxSelectionCount() const { return mMaxSelectionCount; }

    // Copies `count` results: the caller's array may go away right after.
    // Replaces what an earlier call set. Read the results once the command
    // has been signalled.
    void setResult(CKVSelectionResult const* results, unsigned int count);
    unsigned int getResultCount() const { return static_cast<unsigned int>(mResults.size()); }
    // Null past the end.
    CKVSelectionResult const* getResult(unsigned int index) const;

private:
    CKVPoint3D mCorner1;
    CKVPoint3D mCorner2;
    unsigned int mMaxSelectionCount;
    std::vector<CKVSelectionResult> mResults;
};

} // namespace Kelvor
