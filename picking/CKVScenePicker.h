#pragma once

#include "TarnwickGeometry/CKVPoint3D.h"

#include <osg/Camera>
#include <osg/ref_ptr>

#include <vector>

namespace Kelvor {

class CKVSelectionResult;

// Answers the host's scene queries against what the main camera shows: the
// drawable under a window point, the first drawable along a world segment,
// and the drawables inside a window rectangle. Window points come from the
// host with y counted from the top. Everything is made for one query; the
// scene is only read, on the render thread between frames.
class CKVScenePicker
{
public:
    // Null when there is no viewer or camera: every query then fails.
    explicit CKVScenePicker(osg::Camera* camera);

    bool pick(CKVPoint3D const& pixel, CKVSelectionResult& result) const;
    bool intersect(CKVPoint3D const& start, CKVPoint3D const& end, CKVSelectionResult& result) const;
    // Up to `maxCount` results, nearest first. A drawable hit again right
    // after itself is listed once; one that comes back after another is
    // listed again.
    bool select(CKVPoint3D const& corner1, CKVPoint3D const& corner2, unsigned int maxCount,
                std::vector<CKVSelectionResult>& results) const;

    // Off: every instance of a geometry is tried, without the instance
    // search. Answers are the same either way; off is the slow reference.
    void setUseInstanceSearch(bool use) { mUseInstanceSearch = use; }

private:
    osg::ref_ptr<osg::Camera> mCamera;
    bool mUseInstanceSearch = true;
};

} // namespace Kelvor
