#pragma once

#include <osg/ref_ptr>
#include <osgAnimation/Animation>

struct aiAnimation;

namespace Kelvor {

class CKVFBXSceneHandle;

// Turns one clip of an imported file into an osgAnimation::Animation: per
// animated node a translation, a rotation and a scale channel, aimed at the
// node's name and at the stacked elements "translate", "quaternion" and
// "scale" that KVFBXSceneBuilder gives every node. Times are seconds from
// the clip's start, as the file gives them: keys before zero (before the
// take's start) are kept where they are, not shifted, so that the motion
// keeps its timing and a loop has no pause at its start.
class KVFBXAnimationBuilder
{
public:
    // Used when a file gives no rate of its own.
    static constexpr double kDefaultTicksPerSecond = 25.0;

    // With a skeleton, channels for nodes it lacks are left out. Null when
    // no channel remains.
    static osg::ref_ptr<osgAnimation::Animation> build(aiAnimation const& clip,
                                                       CKVFBXSceneHandle const* skeleton);
};

} // namespace Kelvor
