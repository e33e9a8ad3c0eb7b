#include "DispatchTestContexts.h"

#include "binding/KVRenderCommandDispatchFactory.h"
#include "scene/CKVSceneNodeImp.h"

#include "TarnwickCommon/CKVRuntimeClass.h"
#include "TarnwickRender/CKVRCApplyBackGround.h"
#include "TarnwickRender/CKVRCInsertSceneNode.h"
#include "TarnwickRender/CKVRCRemoveAllChildNode.h"
#include "TarnwickRender/CKVRCRemoveSceneNode.h"
#include "TarnwickRender/CKVRenderCallback.h"
#include "TarnwickRender/CKVRenderCommandCache.h"
#include "TarnwickRender/CKVRenderCommandDispatchMgr.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

namespace Kelvor {
namespace {

std::map<unsigned int, std::string> const kDispatchClasses = {
    {0, "CKVRCDispatchAttachSceneData"},
    {1, "CKVRCDispatchDetachSceneData"},
    {2, "CKVRCDispatchInsertSceneNode"},
    {3, "CKVRCDispatchRemoveSceneNode"},
    {4, "CKVRCDispatchRemoveAllChildNode"},
    {5, "CKVRCDispatchInsertRenderObject"},
    {6, "CKVRCDispatchRemoveRenderObject"},
    {7, "CKVRCDispatchRemoveAllRenderObject"},
    {8, "CKVRCDispatchApplyCamera"},
    {9, "CKVRCDispatchSetViewPort"},
    {10, "CKVRCDispatchGetCapture"},
    {11, "CKVRCDispatchPickSelectObject"},
    {12, "CKVRCDispatchAreaSelectObject"},
    {13, "CKVRCDispatchZoomCamera"},
    {14, "CKVRCDispatchUpdateClipTest"},
    {16, "CKVRCDispatchLineSegmentIntersection"},
    {17, "CKVRCDispatchApplyRenderConfig"},
    {18, "CKVRCDispatchWaterMask"},
    {19, "CKVRCDispatchSetActiveUniforms"},
    {21, "CKVRCDispatchSetTerrainHeight"},
    {22, "CKVRCDispatchUpdateBufferGeometry"},
    {23, "CKVRCDispatchAnimationResOperator"},
};

// Each command id the host sends gives its own dispatch class, the others
// nothing. The host can also make every dispatch class by name, the
// background dispatch included, although no command id leads to it.
TEST(DispatchFactoryTest, EachUsedIdGivesItsOwnClassAndEveryClassIsCreatableByName)
{
    for (unsigned int id = 0; id < 64; ++id) {
        kv_shared_ptr<CKVRenderCommandDispatch> made(createRenderCommandDispatch(id));
        auto const expected = kDispatchClasses.find(id);
        if (expected == kDispatchClasses.end()) {
            EXPECT_FALSE(made) << "id " << id;
            continue;
        }
        ASSERT_TRUE(made) << "id " << id;
        EXPECT_EQ(made->isA()->name(), expected->second) << "id " << id;
    }
    EXPECT_FALSE(kv_shared_ptr<CKVRenderCommandDispatch>(createRenderCommandDispatch(~0u)));

    std::map<unsigned int, std::string> classes = kDispatchClasses;
    classes[CKVRenderCommand::kApplyBackGround] = "CKVRCDispatchApplyBackGround";
    for (auto const& entry : classes) {
        CKVRuntimeClass const* record = CKVRuntimeClass::find(entry.second.c_str());
        ASSERT_NE(record, nullptr) << entry.second;
        kv_shared_ptr<CKVObject> made(static_cast<CKVSharedObject*>(record->createObject()));
        ASSERT_TRUE(made) << entry.second;
        EXPECT_TRUE(made->isKindOf(CKVRenderCommandDispatch::desc())) << entry.second;
    }
}

// The render thread's drain: every command goes through the host's manager
// with the factory the module registered, in the order written, and every
// one is signalled whether or not it could be carried out.
TEST(DispatchFactoryTest, TheManagerRunsABatchInOrderAndEveryCommandIsSignalled)
{
    kv_shared_ptr<CKVRenderCommandDispatch> registered(CKVRenderCallback::createRenderCommandDispatch(2));
    ASSERT_TRUE(registered);
    EXPECT_EQ(registered->isA(), CKVRuntimeClass::find("CKVRCDispatchInsertSceneNode"));

    kv_shared_ptr<CKVSceneNodeImp> parent(new CKVSceneNodeImp);
    kv_shared_ptr<CKVSceneNodeImp> first(new CKVSceneNodeImp);
    kv_shared_ptr<CKVSceneNodeImp> second(new CKVSceneNodeImp);
    kv_shared_ptr<CKVRenderCommand> const commands[] = {
        new CKVRCInsertSceneNode(parent.get(), first.get()),
        new CKVRCRemoveSceneNode(parent.get(), first.get()),
        new CKVRCInsertSceneNode(parent.get(), second.get()),
        // No dispatch for this id, and one without a node: both fail.
        new CKVRCApplyBackGround(CKVBackGroundConfig()),
        new CKVRCRemoveAllChildNode(nullptr),
    };
    CKVRenderCommandCache cache;
    for (kv_shared_ptr<CKVRenderCommand> const& command : commands)
        cache.write(command.get());
    cache.finish();

    RecordingContext context;
    CKVRenderCommandDispatchMgr manager;
    CKVRenderCommandCache::CommandList list;
    ASSERT_EQ(cache.read(list, false), 5u);
    std::vector<bool> results;
    for (kv_shared_ptr<CKVRenderCommand> const& command : list) {
        results.push_back(manager.dispatch(&context, *command));
        command->signal();
    }

    EXPECT_EQ(results, (std::vector<bool>{true, true, true, false, false}));
    for (kv_shared_ptr<CKVRenderCommand> const& command : commands)
        EXPECT_TRUE(command->isSignalled());
    ASSERT_EQ(parent->getOSGNode()->getNumChildren(), 1u);
    EXPECT_EQ(parent->getOSGNode()->getChild(0), second->getOSGNode());
    EXPECT_TRUE(context.calls.empty());
}

} // namespace
} // namespace Kelvor
