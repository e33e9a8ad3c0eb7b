#include "TarnwickRender/CKVRenderCallback.h"
#include "TarnwickRender/CKVRenderCommandDispatch.h"
#include "TarnwickRender/CKVRenderCommandDispatchMgr.h"
#include "TarnwickRender/CKVRCSetTerrainHeight.h"
#include "TarnwickRender/CKVRCWaterMask.h"
#include "TarnwickRender/CKVRenderContext.h"
#include "TarnwickRender/CKVGraphicsModel.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

using namespace Kelvor;

namespace {

// Records what reached it; answers as told.
class RecordingDispatch : public CKVRenderCommandDispatch
{
public:
    explicit RecordingDispatch(bool answer) : mAnswer(answer) {}
    bool dispatch(CKVRenderContext* context, CKVRenderCommand& command) override
    {
        mContexts.push_back(context);
        mCommands.push_back(&command);
        return mAnswer;
    }
    bool mAnswer;
    std::vector<CKVRenderContext*> mContexts;
    std::vector<CKVRenderCommand*> mCommands;
};

std::vector<unsigned int> gFactoryCalls;
RecordingDispatch* gTerrainDispatch = nullptr;

// Knows only the terrain height command, like a backend with gaps in its table.
CKVRenderCommandDispatch* terrainOnlyFactory(unsigned int id)
{
    gFactoryCalls.push_back(id);
    if (id != CKVRenderCommand::kSetTerrainHeight)
        return nullptr;
    gTerrainDispatch = new RecordingDispatch(true);
    return gTerrainDispatch;
}

class DispatchSpineTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        gFactoryCalls.clear();
        gTerrainDispatch = nullptr;
    }
    void TearDown() override { CKVRenderCallback::unregCreateRenderCommandDispatch(); }
};

// A command that brings its own dispatch object.
class SelfDispatchingCommand : public CKVRenderCommand
{
public:
    explicit SelfDispatchingCommand(CKVRenderCommandDispatch* dispatch) : mDispatch(dispatch) {}
    ID getID() const override { return kSetTerrainHeight; }
    CKVRenderCommandDispatch* getDispatch() const override { return mDispatch.get(); }
    kv_shared_ptr<CKVRenderCommandDispatch> mDispatch;
};

} // namespace

TEST_F(DispatchSpineTest, WithoutAFactoryEveryDispatchFails)
{
    CKVRenderCommandDispatchMgr manager;
    kv_shared_ptr<CKVRenderCommand> command(new CKVRCSetTerrainHeight(12.5f));
    EXPECT_FALSE(manager.dispatch(nullptr, *command));
    EXPECT_EQ(nullptr, CKVRenderCallback::createRenderCommandDispatch(CKVRenderCommand::kSetTerrainHeight));
}

TEST_F(DispatchSpineTest, ManagerAsksTheFactoryOncePerIdAndForwardsContextAndCommand)
{
    ASSERT_TRUE(CKVRenderCallback::regCreateRenderCommandDispatch(&terrainOnlyFactory));
    CKVRenderCommandDispatchMgr manager;
    auto* context = reinterpret_cast<CKVRenderContext*>(0x1000); // only passed through, never used
    kv_shared_ptr<CKVRenderCommand> first(new CKVRCSetTerrainHeight(1.0f));
    kv_shared_ptr<CKVRenderCommand> second(new CKVRCSetTerrainHeight(2.0f));

    EXPECT_TRUE(manager.dispatch(context, *first));
    EXPECT_TRUE(manager.dispatch(context, *second));
    ASSERT_NE(nullptr, gTerrainDispatch);
    EXPECT_EQ((std::vector<unsigned int>{21}), gFactoryCalls); // kept after the first use
    EXPECT_EQ((std::vector<CKVRenderContext*>{context, context}), gTerrainDispatch->mContexts);
    EXPECT_EQ((std::vector<CKVRenderCommand*>{first.get(), second.get()}), gTerrainDispatch->mCommands);

    // An id the factory does not know fails, and is asked again next time.
    kv_shared_ptr<CKVRenderCommand> water(new CKVRCWaterMask("/mask.png", 4, 4));
    EXPECT_FALSE(manager.dispatch(context, *water));
    EXPECT_FALSE(manager.dispatch(context, *water));
    EXPECT_EQ((std::vector<unsigned int>{21, 18, 18}), gFactoryCalls);

    // A dispatch that fails makes the manager fail.
    gTerrainDispatch->mAnswer = false;
    EXPECT_FALSE(manager.dispatch(context, *first));
}

TEST_F(DispatchSpineTest, ACommandsOwnDispatchWinsOverTheFactory)
{
    ASSERT_TRUE(CKVRenderCallback::regCreateRenderCommandDispatch(&terrainOnlyFactory));
    auto* own = new RecordingDispatch(true);
    kv_shared_ptr<CKVRenderCommand> command(new SelfDispatchingCommand(own));
    CKVRenderCommandDispatchMgr manager;
    EXPECT_TRUE(manager.dispatch(nullptr, *command));
    EXPECT_EQ(1u, own->mCommands.size());
    EXPECT_TRUE(gFactoryCalls.empty());
}

TEST_F(DispatchSpineTest, ManagerReleasesItsDispatchObjects)
{
    ASSERT_TRUE(CKVRenderCallback::regCreateRenderCommandDispatch(&terrainOnlyFactory));
    kv_shared_ptr<CKVRenderCommand> command(new CKVRCSetTerrainHeight(1.0f));
    kv_shared_ptr<RecordingDispatch> watch;
    {
        CKVRenderCommandDispatchMgr manager;
        ASSERT_TRUE(manager.dispatch(nullptr, *command));
        watch = gTerrainDispatch;
        EXPECT_EQ(2u, watch->refCount());
    }
    EXPECT_EQ(1u, watch->refCount());
}

namespace {

int gLastContextId = 0;
std::string gLastUniformName;
unsigned int gLastUniformType = 0;
int gCalls = 0;

CKVRenderContext* contextFactory(int id)
{
    gLastContextId = id;
    ++gCalls;
    return nullptr;
}
bool destroyFactory(CKVRenderContext*& context)
{
    ++gCalls;
    context = nullptr;
    return true;
}
CKVVertexBufferAttribute* attributeFactory(CKVVertexBufferAttribute::Name) { ++gCalls; return nullptr; }
CKVVertexIndex* indexFactory(unsigned int) { ++gCalls; return nullptr; }
CKVBufferGeometry* geometryFactory() { ++gCalls; return nullptr; }
CKVTextGeometry* textFactory() { ++gCalls; return nullptr; }
CKVUniform* uniformFactory(char const* name, unsigned int type)
{
    gLastUniformName = name;
    gLastUniformType = type;
    ++gCalls;
    return nullptr;
}
CKVSceneNode* nodeFactory() { ++gCalls; return nullptr; }
CKVAnimationResource* animationFactory(unsigned int) { throw std::runtime_error("backend failure"); }
CKVRenderCommandDispatch* dispatchFactory(unsigned int) { ++gCalls; return nullptr; }

bool refuseAll(CKVGraphicsModel*) { return false; }

} // namespace

TEST(RenderCallbackSpineTest, RegisteredFactoriesAreCalledUntilRemoved)
{
    gCalls = 0;
    EXPECT_TRUE(CKVRenderCallback::regCreateRenderContext(&contextFactory));
    EXPECT_TRUE(CKVRenderCallback::regDestroyRenderContext(&destroyFactory));
    EXPECT_TRUE(CKVRenderCallback::regCreateVertexBufferAttribute(&attributeFactory));
    EXPECT_TRUE(CKVRenderCallback::regCreateVertexIndex(&indexFactory));
    EXPECT_TRUE(CKVRenderCallback::regCreateBufferGeometry(&geometryFactory));
    EXPECT_TRUE(CKVRenderCallback::regCreateTextGeometery(&textFactory));
    EXPECT_TRUE(CKVRenderCallback::regCreateUniform(&uniformFactory));
    EXPECT_TRUE(CKVRenderCallback::regCreateSceneNode(&nodeFactory));
    EXPECT_TRUE(CKVRenderCallback::regCreateAnimationResource(&animationFactory));
    EXPECT_TRUE(CKVRenderCallback::regCreateRenderCommandDispatch(&dispatchFactory));

    // A null registration is refused and keeps what was there.
    EXPECT_FALSE(CKVRenderCallback::regCreateRenderContext(nullptr));
    EXPECT_FALSE(CKVRenderCallback::regCreateUniform(nullptr));

    auto const callAll = [] {
        CKVRenderCallback::createRenderContext(7);
        auto* fake = reinterpret_cast<CKVRenderContext*>(0x10);
        CKVRenderCallback::destroyRenderContext(fake);
        CKVRenderCallback::createVertexBufferAttribute(CKVVertexBufferAttribute::Name(0));
        CKVRenderCallback::createVertexIndex(2);
        CKVRenderCallback::createBufferGeometry();
        CKVRenderCallback::createTextGeometry();
        CKVRenderCallback::createUniform("Tint_V3", 12);
        CKVRenderCallback::createSceneNode();
        // A throwing factory gives null rather than an exception in the host.
        EXPECT_EQ(nullptr, CKVRenderCallback::createAnimationResource(1));
        CKVRenderCallback::createRenderCommandDispatch(3);
    };
    EXPECT_NO_THROW(callAll());
    EXPECT_EQ(9, gCalls);
    EXPECT_EQ(7, gLastContextId);
    EXPECT_EQ("Tint_V3", gLastUniformName);
    EXPECT_EQ(12u, gLastUniformType);

    CKVRenderContext* none = nullptr;
    EXPECT_FALSE(CKVRenderCallback::destroyRenderContext(none)); // null never reaches the backend
    EXPECT_EQ(9, gCalls);

    CKVRenderCallback::unregCreateRenderContext();
    CKVRenderCallback::unregDestroyRenderContext();
    CKVRenderCallback::unregCreateVertexBufferAttribute();
    CKVRenderCallback::unregCreateVertexIndex();
    CKVRenderCallback::unregCreateBufferGeometry();
    CKVRenderCallback::unregCreateTextGeometry();
    CKVRenderCallback::unregCreateUniform();
    CKVRenderCallback::unregCreateSceneNode();
    CKVRenderCallback::unregCreateAnimationResource();
    CKVRenderCallback::unregCreateRenderCommandDispatch();
    gCalls = 0;
    callAll();
    EXPECT_EQ(0, gCalls);
    auto* fake = reinterpret_cast<CKVRenderContext*>(0x10);
    EXPECT_FALSE(CKVRenderCallback::destroyRenderContext(fake));
    EXPECT_NE(nullptr, fake); // untouched when nothing is registered
}

TEST(RenderCallbackSpineTest, GraphicsModelVerification)
{
    kv_shared_ptr<CKVGraphicsModel> model(new CKVGraphicsModel);
    EXPECT_FALSE(CKVRenderCallback::verifyGraphicsModel(nullptr));
    EXPECT_TRUE(CKVRenderCallback::verifyGraphicsModel(model.get()));
    CKVRenderCallback::setGraphicsModelVerifier(&refuseAll);
    EXPECT_FALSE(CKVRenderCallback::verifyGraphicsModel(model.get()));
    CKVRenderCallback::setGraphicsModelVerifier(nullptr);
    EXPECT_TRUE(CKVRenderCallback::verifyGraphicsModel(model.get()));
}
