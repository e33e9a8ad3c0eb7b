#pragma once

#include <osg/Matrixd>
#include <osg/Matrixf>

#include <unordered_map>

namespace osg {
class Drawable;
}

namespace Kelvor {

// The model matrix each drawable had in the previous frame, for motion
// vectors and temporal effects. A drawable is drawn by several passes per
// frame (shadows, depth pre-pass, main pass); the record advances on the
// first draw of a frame only, told by the frame number, so that every pass
// of one frame sees the same pair of matrices.
//
// Records are keyed by the drawable's address and hold no reference, so
// the scene graph stays untouched. A drawable first seen, or not drawn in
// the previous frame, gets its current model as last model: no motion.
// Records of drawables not drawn lately are dropped now and then, which
// keeps the map small and makes the reuse of a freed address harmless.
// The map allocates only when it first sees a drawable.
class CKVLastModelMatrixStore
{
public:
    // The last model matrix of `drawable`, drawn in `frameNumber` with `model`.
    osg::Matrixf const& lastModelMatrix(osg::Drawable const* drawable, osg::Matrixd const& model,
                                        unsigned int frameNumber);

    std::size_t size() const { return mRecords.size(); }
    void clear() { mRecords.clear(); }

    // Frames between sweeps for stale records.
    static constexpr unsigned int kSweepInterval = 64;

private:
    struct Record
    {
        osg::Matrixf model;
        osg::Matrixf lastModel;
        unsigned int frameNumber = 0;
    };

    void sweep(unsigned int frameNumber);

    std::unordered_map<osg::Drawable const*, Record> mRecords;
    unsigned int mLastSweep = 0;
};

} // namespace Kelvor
