#pragma once

#include <osg/Texture2D>

namespace Kelvor {

class CKVFullScreenGenerator;

// The fixed order of the full-screen effects: edges, anti-aliasing,
// volumetric light, depth of field. Each effect that is on reads the output
// of the nearest effect before it that is on, or the scene colour; effects
// that are off are pointed at the scene colour, so switching one back on
// never reads a stale texture.
class CKVEffectChain
{
public:
    struct Stage
    {
        CKVFullScreenGenerator* generator;  // may be null: not made yet
        bool enabled;
    };
    static constexpr int kStageCount = 4;

    // Links the inputs and returns what the final pass shows: the output of
    // the last stage that is on and exists, else `sceneColor`.
    static osg::Texture2D* link(Stage const (&stages)[kStageCount], osg::Texture2D* sceneColor);
};

} // namespace Kelvor
