#pragma once

#include "bench/CKVBenchMesh.h"

#include <cstdint>
#include <vector>

namespace osg {
class Stats;
}

namespace Kelvor {

class CKVBenchReport;

// One way of putting the benchmark model on screen. The runner drives every
// way through the same steps, with the same camera path, and reads the
// same figures from each.
class CKVSceneBench
{
public:
    // Per-frame CPU times of the viewer's traversals, in milliseconds, as
    // the viewer's own statistics recorded them; negative when absent.
    struct TraversalTimes
    {
        double update = -1.0;
        double cull = -1.0;
        double draw = -1.0;
        double rendering = -1.0;
    };

    virtual ~CKVSceneBench() = default;

    // Window, context and viewer; false when there is no display.
    virtual bool open(int width, int height) = 0;
    // Builds the model; the first frame is not part of it.
    virtual bool build(std::vector<CKVBenchMesh> const& meshes, std::vector<CKVBenchPlacement> const& placements) = 0;
    virtual void setCamera(double const eye[3], double const target[3], double fovDegrees, double aspect, double zNear,
                           double zFar) = 0;
    virtual bool frame() = 0;
    virtual TraversalTimes lastFrameTimes() const = 0;
    // Bytes of vertex, index and per-instance data that the model hands to
    // GL, and whatever else the way knows about its memory.
    virtual void reportMemory(CKVBenchReport& report) const = 0;
    // Tears everything down explicitly: the packaged OpenSceneGraph crashes
    // at exit when a context is left to static destruction.
    virtual void close() = 0;

    // Picking, on the pick paths. The placement under window point (x, y),
    // y counted from the top, or -1 for none; the placements inside a
    // window rectangle. Ways that cannot pick answer nothing.
    virtual long long pickPlacement(double /*x*/, double /*y*/) { return -1; }
    virtual void selectPlacements(double /*x1*/, double /*y1*/, double /*x2*/, double /*y2*/,
                                  std::vector<long long>& placements)
    {
        placements.clear();
    }
    // Tries every instance instead of searching; the answers must not change.
    virtual void setExhaustivePicking(bool /*exhaustive*/) {}
    // What building the picking index cost, where the way has one.
    virtual void reportPickIndex(CKVBenchReport& /*report*/) const {}

protected:
    // The traversal times of `frameNumber` from a viewer's and a camera's
    // statistics.
    static TraversalTimes readTimes(osg::Stats* viewerStats, osg::Stats* cameraStats, unsigned int frameNumber);
};

} // namespace Kelvor
