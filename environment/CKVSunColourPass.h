#pragma once

#include "effects/CKVSceneGenerator.h"

#include <osg/Texture2D>
#include <osg/ref_ptr>

namespace Kelvor {

class CBGGeode;

// The pass that writes the colour of sunlight at the scene into one texel:
// a full-screen triangle into a 1 x 1 target, before the scene's passes.
class CKVSunColourPass
{
public:
    static constexpr unsigned int kProgramKind = 19;
    static constexpr int kRenderOrder = 1;

    // The 1 x 1 target: RGB, nearest, repeating.
    static osg::ref_ptr<osg::Texture2D> createTarget();

    // The pass over `geode` (a full-screen triangle, made here when null)
    // rendering into `target`, with its program on the pass state set.
    static osg::ref_ptr<CKVSceneGenerator::PassData> create(CKVSceneGenerator& owner, CBGGeode* geode,
                                                            osg::Texture2D* target);

    static osg::ref_ptr<CBGGeode> createGeode();
};

} // namespace Kelvor
