#include "bench/CKVSceneBench.h"

#include <osg/Stats>

namespace Kelvor {

CKVSceneBench::TraversalTimes CKVSceneBench::readTimes(osg::Stats* viewerStats, osg::Stats* cameraStats,
                                                       unsigned int frameNumber)
{
    TraversalTimes times;
    double seconds = 0.0;
    if (viewerStats && viewerStats->getAttribute(frameNumber, "Update traversal time taken", seconds))
        times.update = seconds * 1000.0;
    if (viewerStats && viewerStats->getAttribute(frameNumber, "Rendering traversals time taken", seconds))
        times.rendering = seconds * 1000.0;
    if (cameraStats && cameraStats->getAttribute(frameNumber, "Cull traversal time taken", seconds))
        times.cull = seconds * 1000.0;
    if (cameraStats && cameraStats->getAttribute(frameNumber, "Draw traversal time taken", seconds))
        times.draw = seconds * 1000.0;
    return times;
}

} // namespace Kelvor
