#pragma once

#include <osg/ref_ptr>
#include <osgAnimation/Animation>

struct aiAnimation;

namespace Kelvor {

class CKVFBXSceneHandle;

// Turns one clip of an imported file into an osgAnimation::Animation: per
// animated node a translation, a rotation and a scale channel, aimed at the
// node's name and at the stacked elements "translate", "quaternion" and
// "scale" that KVFBXSceneBuilder gives every node. Times are seconds; a
// clip whose keys start before zero is shifted to start at zero, because a
// played animation starts at its time zero.
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
