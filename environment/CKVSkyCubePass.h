#pragma once

#include "effects/CKVSceneGenerator.h"

#include <osg/ref_ptr>

namespace Kelvor {

class CBGGeode;
class IBLGeometry;

// The pass that draws the sky into the environment cube map (and, through
// its geometry, the image-based light maps). Its camera only schedules the
// draw: the geometry binds its own layered framebuffer.
class CKVSkyCubePass
{
public:
    static constexpr unsigned int kProgramKind = 8;
    static constexpr int kRenderOrder = 2;
    static constexpr int kCubeSize = 1024;
    // Clip planes of the scene never cut the sky.
    static constexpr unsigned int kClipPlanes = 6;

    static osg::ref_ptr<CKVSceneGenerator::PassData> create(CKVSceneGenerator& owner, CBGGeode* geode,
                                                            IBLGeometry* geometry);
};

} // namespace Kelvor
