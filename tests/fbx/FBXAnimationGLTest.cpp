// An FBX character attached to a scene node and played entirely through
// render commands: the tick's update traversal poses it, so what the window
// shows changes while the clip plays and stops changing once stopped.
#include "FBXTestSupport.h"
#include "binding/RenderContextFixture.h"

#include "fbx/CKVFBXAnimationImp.h"

#include "TarnwickRender/CKVCamera.h"
#include "TarnwickRender/CKVFBXAnimation.h"
#include "TarnwickRender/CKVProgramParam.h"
#include "TarnwickRender/CKVRCAnimationResOperator.h"
#include "TarnwickRender/CKVRCApplyCamera.h"
#include "TarnwickRender/CKVRCAttachSceneData.h"
#include "TarnwickRender/CKVSceneNode.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <thread>
#include <vector>

using namespace Kelvor;

namespace {

using FBXAnimationGLTest = RenderContextFixture;

std::vector<unsigned char> grab(TestHostWindow const& host, int width, int height)
{
    return host.readWindow(width, height);
}

int differingPixels(std::vector<unsigned char> const& a, std::vector<unsigned char> const& b)
{
    int count = 0;
    for (std::size_t i = 0; i < a.size(); i += 3)
        count += std::abs(a[i] - b[i]) + std::abs(a[i + 1] - b[i + 1]) + std::abs(a[i + 2] - b[i + 2]) > 30;
    return count;
}

// The background is (51, 102, 153); the character has the file's colours.
int figurePixels(std::vector<unsigned char> const& a)
{
    int count = 0;
    for (std::size_t i = 0; i < a.size(); i += 3)
        count += std::abs(a[i] - 51) + std::abs(a[i + 1] - 102) + std::abs(a[i + 2] - 153) > 30;
    return count;
}

TEST_F(FBXAnimationGLTest, PlayedClipChangesThePictureUntilStopped)
{
    CKVRenderConfig config;
    CKVBackGroundConfig background;
    background.setBackGroundColor(CKVPoint3D(0.2, 0.4, 0.6));
    config.setBackGroundConfig(background);
    mScene.setRenderConfig(config);
    ASSERT_NE(start(), nullptr);

    kv_shared_ptr<CKVAnimationResource> resource(CKVRenderCallback::createAnimationResource(CKVAnimationResource::kFBX));
    ASSERT_TRUE(resource.valid());
    auto* character = static_cast<CKVFBXAnimation*>(resource.get());
    ASSERT_TRUE(character->load(kSkeletonRig.c_str()));
    ASSERT_TRUE(character->addAnimation("clip", kSkeletonRig.c_str()));

    // Where the character stands at rest, to aim the camera (it is not in
    // the scene yet, so this thread may pose it).
    osg::Node* node = static_cast<CKVFBXAnimationImp*>(character)->getNode();
    updateAt(*node, 0.0, 1);
    osg::BoundingSphere const bound = node->getBound();
    ASSERT_TRUE(bound.valid());

    // Flat colour: the meshes show their materials' colours unlit.
    kv_shared_ptr<CKVSceneNode> sceneNode(CKVRenderCallback::createSceneNode());
    sceneNode->setProgramParam(CKVProgramParam(CKVProgramParam::kFlatColor));

    CKVCamera camera;
    camera.setProjectMode(CKVCamera::kPerspective);
    camera.setFieldOfView(60.0);
    camera.setAspect(double(kWidth) / kHeight);
    double const r = bound.radius();
    camera.setNearFar(0.01 * r, 100.0 * r);
    osg::Vec3d const c = bound.center();
    camera.setPosition(CKVPoint3D(c.x(), c.y(), c.z() + 1.6 * r));
    camera.setTarget(CKVPoint3D(c.x(), c.y(), c.z()));
    camera.setUp(CKVVector3D(0, 1, 0));

    kv_shared_ptr<CKVRenderCommand> commands[] = {
        new CKVRCAnimationResOperator(sceneNode.get(), resource.get(), CKVRCAnimationResOperator::kAttach),
        new CKVRCAttachSceneData(sceneNode.get()),
        new CKVRCApplyCamera(camera),
    };
    CKVRenderCommandCache* cache = mContext->getRenderCommandCache();
    for (auto& command : commands)
        cache->write(command.get());
    ASSERT_TRUE(cache->submitAndWait(commands[2].get(), 10000));
    ASSERT_TRUE(waitForFrames(mCounter->frames() + 3));
    std::vector<unsigned char> const rest = grab(*mHost, kWidth, kHeight);
    ASSERT_GT(figurePixels(rest), 20) << "the character is in view";

    kv_shared_ptr<CKVRCAnimationResOperator> play =
        new CKVRCAnimationResOperator(sceneNode.get(), resource.get(), CKVRCAnimationResOperator::kSetActiveAnimation, "clip");
    ASSERT_TRUE(cache->submitAndWait(play.get(), 10000));
    ASSERT_TRUE(waitForFrames(mCounter->frames() + 3));
    std::vector<unsigned char> const early = grab(*mHost, kWidth, kHeight);
    // The clip loops every 0.83 s and only one bone moves, so sample often
    // enough (well under half the loop) over more than a whole loop that no
    // sampling rhythm can land on the same pose every time.
    int largest = 0;
    for (int i = 0; i < 16; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(70));
        ASSERT_TRUE(waitForFrames(mCounter->frames() + 1));
        largest = std::max(largest, differingPixels(early, grab(*mHost, kWidth, kHeight)));
    }
    // The clip moves a limb or two: a few dozen pixels at this size, none at all
    // while nothing plays (checked below).
    EXPECT_GT(largest, 5) << "the pose moved while the clip played";

    kv_shared_ptr<CKVRCAnimationResOperator> stop =
        new CKVRCAnimationResOperator(sceneNode.get(), resource.get(), CKVRCAnimationResOperator::kStop);
    ASSERT_TRUE(cache->submitAndWait(stop.get(), 10000));
    ASSERT_TRUE(waitForFrames(mCounter->frames() + 3));
    std::vector<unsigned char> const stopped = grab(*mHost, kWidth, kHeight);
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    ASSERT_TRUE(waitForFrames(mCounter->frames() + 2));
    EXPECT_EQ(differingPixels(stopped, grab(*mHost, kWidth, kHeight)), 0) << "a stopped clip holds its pose";
}

} // namespace
