#include "DispatchTestContexts.h"

#include "binding/KVRenderCommandDispatchFactory.h"
#include "scene/CKVBufferGeometryImp.h"
#include "scene/CKVOSGGeometry.h"
#include "scene/CKVSceneNodeImp.h"

#include "TarnwickRender/CKVGroupObject.h"
#include "TarnwickRender/CKVLogicBufferGeometry.h"
#include "TarnwickRender/CKVRCAnimationResOperator.h"
#include "TarnwickRender/CKVRCApplyBackGround.h"
#include "TarnwickRender/CKVRCApplyCamera.h"
#include "TarnwickRender/CKVRCApplyRenderConfig.h"
#include "TarnwickRender/CKVRCAreaSelectObject.h"
#include "TarnwickRender/CKVRCAttachSceneData.h"
#include "TarnwickRender/CKVRCDetachSceneData.h"
#include "TarnwickRender/CKVRCGetCapture.h"
#include "TarnwickRender/CKVRCInsertRenderObject.h"
#include "TarnwickRender/CKVRCInsertSceneNode.h"
#include "TarnwickRender/CKVRCLineSegmentIntersection.h"
#include "TarnwickRender/CKVRCPickSelectObject.h"
#include "TarnwickRender/CKVRCRemoveAllChildNode.h"
#include "TarnwickRender/CKVRCRemoveAllRenderObject.h"
#include "TarnwickRender/CKVRCRemoveRenderObject.h"
#include "TarnwickRender/CKVRCRemoveSceneNode.h"
#include "TarnwickRender/CKVRCSetActiveUniforms.h"
#include "TarnwickRender/CKVRCSetTerrainHeight.h"
#include "TarnwickRender/CKVRCSetViewPort.h"
#include "TarnwickRender/CKVRCUpdateBufferGeometry.h"
#include "TarnwickRender/CKVRCUpdateClipTest.h"
#include "TarnwickRender/CKVRCWaterMask.h"
#include "TarnwickRender/CKVRenderCommandDispatch.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace Kelvor {
namespace {

class ForeignNode : public CKVSceneNode
{
};

// The dispatch object that the factory gives for the command's id (or the
// background dispatch, which has none), run on `context`.
bool run(CKVRenderContext* context, CKVRenderCommand& command)
{
    kv_shared_ptr<CKVRenderCommandDispatch> dispatch =
        command.getID() == CKVRenderCommand::kApplyBackGround
            ? static_cast<CKVRenderCommandDispatch*>(
                  CKVRuntimeClass::find("CKVRCDispatchApplyBackGround")->createObject())
            : createRenderCommandDispatch(command.getID());
    return dispatch && dispatch->dispatch(context, command);
}

struct ContextCase
{
    kv_shared_ptr<CKVRenderCommand> command;
    std::string call;
};

// Each context command reaches the context operation with its record's
// values, answers what the operation answers, and refuses a missing or
// foreign context without calling anything.
TEST(DispatchCommandTest, ContextCommandsForwardToOurContextOnly)
{
    kv_shared_ptr<CKVSceneNodeImp> node(new CKVSceneNodeImp);
    CKVVec4<float> const planes[] = {{0.0f, 0.0f, 1.0f, 2.0f}, {1.0f, 0.0f, 0.0f, 5.0f}};
    CKVRenderConfig config;
    config.setMaxZoomDistance(42.0);
    std::vector<ContextCase> const cases = {
        {new CKVRCAttachSceneData(node.get()), "attach 1"},
        {new CKVRCDetachSceneData(node.get()), "detach 1"},
        {new CKVRCApplyCamera(CKVCamera()), "applyCamera"},
        {new CKVRCSetViewPort(640, 480), "viewport 640 480"},
        {new CKVRCGetCapture("/tmp/shot.png", CKVVec2<unsigned int>(32, 16), CKVCamera(), true),
         "capture /tmp/shot.png 32 16 1"},
        {new CKVRCUpdateClipTest(planes, 2), "clip 2 5"},
        {new CKVRCApplyRenderConfig(config), "config 42"},
        {new CKVRCWaterMask("/tmp/mask.png", 8, 4), "water /tmp/mask.png 8 4"},
        {new CKVRCSetTerrainHeight(1.5f), "terrain 1.5"},
        {new CKVRCApplyBackGround(CKVBackGroundConfig()), "background"},
    };

    ForeignContext foreign;
    for (ContextCase const& entry : cases) {
        RecordingContext context;
        EXPECT_TRUE(run(&context, *entry.command)) << entry.call;
        EXPECT_EQ(context.calls, std::vector<std::string>{entry.call});
        context.answer = false;
        EXPECT_FALSE(run(&context, *entry.command)) << entry.call;

        EXPECT_FALSE(run(nullptr, *entry.command)) << entry.call;
        EXPECT_FALSE(run(&foreign, *entry.command)) << entry.call;
    }

    CKVRCSetActiveUniforms activeUniforms(3);
    EXPECT_FALSE(run(&foreign, activeUniforms));
    EXPECT_FALSE(run(nullptr, activeUniforms));
}

// A pick or segment that finds nothing leaves the selection unset; a hit
// leaves a copy of the result in the command.
TEST(DispatchCommandTest, SelectionsAreWrittenOnlyWhenSomethingWasFound)
{
    RecordingContext context;
    CKVRCPickSelectObject pick(CKVPoint3D(12.0, 34.0, 0.0));
    CKVRCLineSegmentIntersection line(CKVLineSeg(CKVPoint3D(1, 0, 0), CKVPoint3D(9, 0, 0)));
    CKVRCAreaSelectObject area(CKVPoint3D(1, 2, 0), CKVPoint3D(30, 40, 0), 7);

    context.answer = false;
    EXPECT_FALSE(run(&context, pick));
    EXPECT_FALSE(run(&context, line));
    EXPECT_FALSE(run(&context, area));
    EXPECT_EQ(pick.getSelection(), nullptr);
    EXPECT_EQ(line.getSelection(), nullptr);
    EXPECT_EQ(area.getResultCount(), 0u);

    context.answer = true;
    ASSERT_TRUE(run(&context, pick));
    ASSERT_NE(pick.getSelection(), nullptr);
    EXPECT_EQ(pick.getSelection()->getPosition(), CKVPoint3D(12.0, 34.0, 0.0));
    ASSERT_TRUE(run(&context, line));
    ASSERT_NE(line.getSelection(), nullptr);
    EXPECT_EQ(line.getSelection()->getPosition(), CKVPoint3D(9, 0, 0));
    ASSERT_TRUE(run(&context, area));
    ASSERT_EQ(area.getResultCount(), 2u);
    EXPECT_EQ(area.getResult(1)->getPosition(), CKVPoint3D(30, 40, 0));
    EXPECT_EQ(context.calls, (std::vector<std::string>{"pick 12 34", "line 1 9", "area 7", "pick 12 34", "line 1 9",
                                                       "area 7"}));
}

// Scene node commands need one of our nodes where the record names the
// node to change; anything else fails without touching either tree.
TEST(DispatchCommandTest, SceneNodeCommandsOnForeignOrMissingNodesFailCleanly)
{
    RecordingContext context;
    kv_shared_ptr<CKVSceneNode> foreign(new ForeignNode);
    kv_shared_ptr<CKVSceneNodeImp> ours(new CKVSceneNodeImp);
    kv_shared_ptr<CKVSceneNodeImp> child(new CKVSceneNodeImp);
    kv_shared_ptr<CKVGroupObject> group(new CKVGroupObject(child.get()));

    kv_shared_ptr<CKVRenderCommand> const refused[] = {
        new CKVRCInsertSceneNode(foreign.get(), child.get()),
        new CKVRCInsertSceneNode(nullptr, child.get()),
        new CKVRCInsertSceneNode(ours.get(), foreign.get()),
        new CKVRCInsertSceneNode(ours.get(), nullptr),
        new CKVRCRemoveSceneNode(foreign.get(), child.get()),
        new CKVRCRemoveAllChildNode(foreign.get()),
        new CKVRCRemoveAllChildNode(nullptr),
        new CKVRCInsertRenderObject(foreign.get(), group.get()),
        new CKVRCInsertRenderObject(ours.get(), nullptr),
        new CKVRCRemoveRenderObject(nullptr, group.get()),
        new CKVRCRemoveAllRenderObject(foreign.get()),
        new CKVRCAnimationResOperator(ours.get(), nullptr, CKVRCAnimationResOperator::kAttach),
        new CKVRCUpdateBufferGeometry(nullptr),
    };
    for (kv_shared_ptr<CKVRenderCommand> const& command : refused)
        EXPECT_FALSE(run(&context, *command)) << command->isA()->name();
    EXPECT_EQ(foreign->getNumChildNode(), 0u);
    EXPECT_EQ(foreign->getNumRenderObject(), 0u);
    EXPECT_EQ(ours->getNumChildNode(), 0u);
    EXPECT_EQ(ours->getOSGNode()->getNumChildren(), 0u);

    // The remove-all commands succeed on our node whatever it held.
    CKVRCRemoveAllChildNode removeChildren(ours.get());
    CKVRCRemoveAllRenderObject removeObjects(ours.get());
    EXPECT_TRUE(run(&context, removeChildren));
    EXPECT_TRUE(run(&context, removeObjects));
    EXPECT_TRUE(context.calls.empty());
}

// Logic buffers travel in the command; the geometry takes them, packs, and
// its OpenSceneGraph side follows. Nothing to pack gives false.
TEST(DispatchCommandTest, BufferGeometryUpdatesPackAndRebuild)
{
    auto square = [](float x0) {
        float const vertices[] = {x0, 0, 0, x0 + 1, 0, 0, x0 + 1, 1, 0, x0, 1, 0};
        unsigned int const indices[] = {0, 1, 2, 0, 2, 3};
        kv_shared_ptr<CKVLogicBufferGeometry> part(new CKVLogicBufferGeometry);
        part->setVertexData(CKVVertexBufferAttribute::kVertex, vertices, 12);
        part->setIndexData(indices, 6);
        return part;
    };
    kv_shared_ptr<CKVBufferGeometryImp> geometry(new CKVBufferGeometryImp);
    kv_shared_ptr<CKVLogicBufferGeometry> first = square(0.0f);
    kv_shared_ptr<CKVLogicBufferGeometry> second = square(2.0f);

    CKVRCUpdateBufferGeometry addBoth(geometry.get());
    addBoth.addLogicBuffer(first.get(), true);
    addBoth.addLogicBuffer(second.get(), true);
    ASSERT_TRUE(run(nullptr, addBoth));
    osg::Array const* vertices = geometry->getOSGGeometry()->getVertexArray();
    ASSERT_NE(vertices, nullptr);
    EXPECT_EQ(vertices->getNumElements(), 8u);

    CKVRCUpdateBufferGeometry removeFirst(geometry.get());
    removeFirst.addLogicBuffer(first.get(), false);
    ASSERT_TRUE(run(nullptr, removeFirst));
    EXPECT_EQ(geometry->getOSGGeometry()->getVertexArray()->getNumElements(), 4u);

    CKVRCUpdateBufferGeometry nothing(geometry.get());
    EXPECT_FALSE(run(nullptr, nothing));
}

} // namespace
} // namespace Kelvor
