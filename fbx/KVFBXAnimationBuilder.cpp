#include "fbx/KVFBXAnimationBuilder.h"

#include "fbx/CKVFBXSceneHandle.h"
#include "fbx/KVAssimpConvert.h"

#include <assimp/anim.h>

#include <osgAnimation/Channel>

#include <algorithm>

namespace Kelvor {

namespace {

template <class Channel, class Key, class Convert>
osg::ref_ptr<Channel> makeChannel(char const* element, std::string const& target, Key const* keys,
                                  unsigned int count, double secondsPerTick, Convert convert,
                                  double& lastTime)
{
    if (count == 0)
        return nullptr;
    osg::ref_ptr<Channel> channel = new Channel;
    channel->setName(element);
    channel->setTargetName(target);
    auto* container = channel->getOrCreateSampler()->getOrCreateKeyframeContainer();
    for (unsigned int k = 0; k < count; ++k) {
        double const time = keys[k].mTime * secondsPerTick;
        container->push_back(typename Channel::KeyframeContainerType::value_type(time, convert(keys[k].mValue)));
        lastTime = std::max(lastTime, time);
    }
    return channel;
}

} // namespace

osg::ref_ptr<osgAnimation::Animation> KVFBXAnimationBuilder::build(aiAnimation const& clip,
                                                                   CKVFBXSceneHandle const* skeleton)
{
    double const ticksPerSecond = clip.mTicksPerSecond > 0.0 ? clip.mTicksPerSecond : kDefaultTicksPerSecond;
    double const secondsPerTick = 1.0 / ticksPerSecond;

    osg::ref_ptr<osgAnimation::Animation> animation = new osgAnimation::Animation;
    animation->setName(clip.mName.C_Str());
    double lastTime = 0.0;
    for (unsigned int c = 0; c < clip.mNumChannels; ++c) {
        aiNodeAnim const& source = *clip.mChannels[c];
        std::string const target = source.mNodeName.C_Str();
        if (skeleton && !skeleton->hasNode(target))
            continue;
        auto translate = makeChannel<osgAnimation::Vec3LinearChannel>(
            "translate", target, source.mPositionKeys, source.mNumPositionKeys, secondsPerTick,
            [](aiVector3D const& v) { return toOsgVec3(v); }, lastTime);
        auto rotate = makeChannel<osgAnimation::QuatSphericalLinearChannel>(
            "quaternion", target, source.mRotationKeys, source.mNumRotationKeys, secondsPerTick,
            [](aiQuaternion const& q) { return toOsgQuat(q); }, lastTime);
        auto scale = makeChannel<osgAnimation::Vec3LinearChannel>(
            "scale", target, source.mScalingKeys, source.mNumScalingKeys, secondsPerTick,
            [](aiVector3D const& v) { return toOsgVec3(v); }, lastTime);
        for (osgAnimation::Channel* channel : {static_cast<osgAnimation::Channel*>(translate.get()),
                                               static_cast<osgAnimation::Channel*>(rotate.get()),
                                               static_cast<osgAnimation::Channel*>(scale.get())}) {
            if (channel)
                animation->addChannel(channel);
        }
    }
    if (animation->getChannels().empty())
        return nullptr;
    // Keys keep their times. Those below zero lie before the clip's start
    // (a file whose take starts after its first keys): they shape the pose
    // at the start and are never waited for. The clip's own length counts
    // even where its last keys stop earlier.
    double const declared = clip.mDuration * secondsPerTick;
    animation->setDuration(std::max(declared, lastTime));
    return animation;
}

} // namespace Kelvor
