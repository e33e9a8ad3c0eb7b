#include "FBXTestFiles.h"
#include "FBXTestSupport.h"

#include "binding/CKVRCDispatchAnimationResOperator.h"
#include "fbx/CKVFBXAnimationImp.h"
#include "scene/CKVSceneNodeImp.h"

#include "TarnwickRender/CKVRCAnimationResOperator.h"
#include "TarnwickRender/CKVRenderCallback.h"

#include <osgAnimation/Channel>

#include <gtest/gtest.h>

namespace Kelvor {
namespace {

TEST(AnimationResourceFactoryTest, OnlyTypeOneMakesAnFBXResource)
{
    EXPECT_EQ(CKVRenderCallback::createAnimationResource(0), nullptr);
    EXPECT_EQ(CKVRenderCallback::createAnimationResource(2), nullptr);
    kv_shared_ptr<CKVAnimationResource> resource(CKVRenderCallback::createAnimationResource(1));
    ASSERT_TRUE(resource.valid());
    EXPECT_TRUE(resource->isKindOf(CKVFBXAnimationImp::desc()));
    EXPECT_EQ(resource->getType(), CKVAnimationResource::kFBX);
    // Made by the factory only, never by name.
    CKVRuntimeClass const* record = CKVRuntimeClass::find("CKVFBXAnimationImp");
    ASSERT_NE(record, nullptr);
    EXPECT_EQ(record->createObject(), nullptr);
}

TEST(CKVFBXAnimationImpTest, LoadsOneCharacterAndRefusesBadFiles)
{
    CKVFBXAnimationImp resource;
    EXPECT_FALSE(resource.load("/nonexistent/character.fbx"));
    EXPECT_FALSE(resource.load(nullptr));
    EXPECT_EQ(resource.getNode(), nullptr);
    ASSERT_TRUE(resource.load(kSkeletonRig.c_str()));
    ASSERT_NE(resource.getNode(), nullptr);
    osg::Node* first = resource.getNode();
    EXPECT_EQ(first->getUpdateCallback(), resource.getManager());
    EXPECT_FALSE(resource.load(kHuesitosRig.c_str())) << "a second character is refused";
    EXPECT_EQ(resource.getNode(), first);
}

TEST(CKVFBXAnimationImpTest, AnimationListNeedsACharacterAndUniqueNames)
{
    CKVFBXAnimationImp resource;
    EXPECT_FALSE(resource.addAnimation("walk", kSkeletonRig.c_str()));
    EXPECT_EQ(resource.getAnimationCount(), 0u);
    ASSERT_TRUE(resource.load(kSkeletonRig.c_str()));
    EXPECT_TRUE(resource.addAnimation("walk", kSkeletonRig.c_str()));
    EXPECT_TRUE(resource.addAnimation("run", kSkeletonRig.c_str()));
    EXPECT_FALSE(resource.addAnimation("walk", kHuesitosRig.c_str()));
    ASSERT_EQ(resource.getAnimationCount(), 2u);
    EXPECT_STREQ(resource.getAnimationName(0), "walk");
    EXPECT_STREQ(resource.getAnimationName(1), "run");
    EXPECT_STREQ(resource.getAnimationName(2), "");
}

// The first key of the clip's "Mover" translation: which clip it is.
float firstMoverX(osgAnimation::Animation const* clip)
{
    for (osg::ref_ptr<osgAnimation::Channel> const& channel : clip->getChannels()) {
        auto const* translate = dynamic_cast<osgAnimation::Vec3LinearChannel const*>(channel.get());
        if (translate && channel->getTargetName() == "Mover")
            return (*const_cast<osgAnimation::Vec3LinearChannel*>(translate)->getOrCreateSampler()->getKeyframeContainerTyped())[0]
                .getValue()
                .x();
    }
    return -1.0f;
}

// Playing reads the named clip of its file onto the character's skeleton;
// the same name again keeps the clip (no reading), a stopped one restarts,
// another name replaces it, and one clip is registered whatever the order.
// Names not in the list are ignored; an unreadable file leaves nothing.
TEST(CKVFBXAnimationImpTest, PlaysTheNamedClipOneAtATime)
{
    std::string const dir = fbxtest::scratchDirectory();
    ASSERT_TRUE(fbxtest::writeFile(dir, "character.fbx", {"walk", "run", "jump"}));
    std::string const file = dir + "/character.fbx";

    CKVFBXAnimationImp resource;
    resource.playAnimation("walk");  // no character: nothing to do
    EXPECT_EQ(resource.getCurrentAnimation(), nullptr);

    ASSERT_TRUE(resource.load(file.c_str()));
    for (char const* name : {"walk", "run", "jump"})
        ASSERT_TRUE(resource.addAnimation(name, file.c_str()));
    ASSERT_TRUE(resource.addAnimation("broken", "/nonexistent/clip.fbx"));
    CKVOSGAnimationManager* manager = resource.getManager();

    resource.playAnimation("walk");
    osg::ref_ptr<osgAnimation::Animation> walk = resource.getCurrentAnimation();
    ASSERT_TRUE(walk.valid());
    EXPECT_EQ(walk->getName(), "walk");
    EXPECT_FLOAT_EQ(firstMoverX(walk.get()), fbxtest::clipStartX(0));
    EXPECT_TRUE(manager->isPlaying(walk.get()));

    resource.playAnimation("walk");
    EXPECT_EQ(resource.getCurrentAnimation(), walk.get()) << "no second reading";
    resource.stopAll();
    EXPECT_FALSE(manager->isPlaying(walk.get()));
    resource.playAnimation("walk");
    EXPECT_EQ(resource.getCurrentAnimation(), walk.get());
    EXPECT_TRUE(manager->isPlaying(walk.get()));

    for (int round = 0; round < 3; ++round) {
        for (std::size_t clip = 0; clip < 3; ++clip) {
            char const* name = resource.getAnimationName(static_cast<unsigned int>(clip));
            resource.playAnimation(name);
            ASSERT_NE(resource.getCurrentAnimation(), nullptr) << name;
            EXPECT_FLOAT_EQ(firstMoverX(resource.getCurrentAnimation()), fbxtest::clipStartX(clip)) << name;
            EXPECT_EQ(manager->getAnimationList().size(), 1u) << name << " in round " << round;
            resource.stopAll();
        }
    }

    osgAnimation::Animation* jump = resource.getCurrentAnimation();
    resource.playAnimation("jump");
    resource.playAnimation("unknown");
    EXPECT_EQ(resource.getCurrentAnimation(), jump) << "an unknown name changes nothing";
    EXPECT_TRUE(manager->isPlaying(jump));

    resource.playAnimation("broken");
    EXPECT_EQ(resource.getCurrentAnimation(), nullptr);
    EXPECT_TRUE(manager->getAnimationList().empty()) << "the former clip is removed";
}

class ForeignNode : public CKVSceneNode
{
};

bool dispatch(CKVSceneNode* node, CKVAnimationResource* resource, CKVRCAnimationResOperator::Op op,
              char const* name = nullptr)
{
    kv_shared_ptr<CKVRCAnimationResOperator> command = new CKVRCAnimationResOperator(node, resource, op, name);
    CKVRCDispatchAnimationResOperator dispatcher;
    return dispatcher.dispatch(nullptr, *command);
}

TEST(AnimationResOperatorDispatchTest, AttachesPlaysStopsAndDetaches)
{
    kv_shared_ptr<CKVSceneNodeImp> node = new CKVSceneNodeImp;
    kv_shared_ptr<CKVFBXAnimationImp> resource = new CKVFBXAnimationImp;
    ASSERT_TRUE(resource->load(kSkeletonRig.c_str()));
    ASSERT_TRUE(resource->addAnimation("walk", kSkeletonRig.c_str()));
    CKVOSGTransformNode* group = node->getOSGNode();

    EXPECT_FALSE(dispatch(node.get(), resource.get(), CKVRCAnimationResOperator::kNone));
    EXPECT_FALSE(dispatch(node.get(), nullptr, CKVRCAnimationResOperator::kAttach));
    kv_shared_ptr<ForeignNode> foreign = new ForeignNode;
    EXPECT_FALSE(dispatch(foreign.get(), resource.get(), CKVRCAnimationResOperator::kAttach));

    ASSERT_TRUE(dispatch(node.get(), resource.get(), CKVRCAnimationResOperator::kAttach));
    EXPECT_TRUE(group->containsNode(resource->getNode()));
    EXPECT_EQ(group->getNumChildren(), 1u);

    ASSERT_TRUE(dispatch(node.get(), resource.get(), CKVRCAnimationResOperator::kSetActiveAnimation, "walk"));
    ASSERT_NE(resource->getCurrentAnimation(), nullptr);
    EXPECT_TRUE(resource->getManager()->isPlaying(resource->getCurrentAnimation()));

    ASSERT_TRUE(dispatch(node.get(), resource.get(), CKVRCAnimationResOperator::kStop));
    EXPECT_FALSE(resource->getManager()->isPlaying(resource->getCurrentAnimation()));

    ASSERT_TRUE(dispatch(node.get(), resource.get(), CKVRCAnimationResOperator::kDetach));
    EXPECT_FALSE(group->containsNode(resource->getNode()));
}

// An FBX resource of the host's own making has no character of ours.
TEST(AnimationResOperatorDispatchTest, RefusesResourcesOfOtherClasses)
{
    class HostAnimation : public CKVFBXAnimation
    {
    public:
        bool load(char const*) override { return true; }
        bool addAnimation(char const*, char const*) override { return true; }
        unsigned int getAnimationCount() const override { return 0; }
        char const* getAnimationName(unsigned int) const override { return ""; }
    };
    kv_shared_ptr<CKVSceneNodeImp> node = new CKVSceneNodeImp;
    kv_shared_ptr<HostAnimation> resource = new HostAnimation;
    EXPECT_FALSE(dispatch(node.get(), resource.get(), CKVRCAnimationResOperator::kAttach));
    EXPECT_EQ(node->getOSGNode()->getNumChildren(), 0u);
}

} // namespace
} // namespace Kelvor
