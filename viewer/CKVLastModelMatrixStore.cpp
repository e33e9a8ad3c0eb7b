#include "viewer/CKVLastModelMatrixStore.h"

namespace Kelvor {

osg::Matrixf const& CKVLastModelMatrixStore::lastModelMatrix(osg::Drawable const* drawable, osg::Matrixd const& model,
                                                             unsigned int frameNumber)
{
    if (frameNumber - mLastSweep >= kSweepInterval)
        sweep(frameNumber);

    auto [entry, inserted] = mRecords.try_emplace(drawable);
    Record& record = entry->second;
    if (inserted)
    {
        record.model = model;
        record.lastModel = record.model;
        record.frameNumber = frameNumber;
    }
    else if (record.frameNumber != frameNumber)
    {
        bool const drawnLastFrame = record.frameNumber + 1 == frameNumber;
        record.lastModel = drawnLastFrame ? record.model : osg::Matrixf(model);
        record.model = model;
        record.frameNumber = frameNumber;
    }
    return record.lastModel;
}

void CKVLastModelMatrixStore::sweep(unsigned int frameNumber)
{
    mLastSweep = frameNumber;
    // A record not drawn in this or the previous frame is reset on its next
    // draw anyway, so nothing is lost by dropping it.
    for (auto entry = mRecords.begin(); entry != mRecords.end();)
    {
        if (frameNumber - entry->second.frameNumber > 1)
            entry = mRecords.erase(entry);
        else
            ++entry;
    }
}

} // namespace Kelvor
