#include "RenderContextFixture.h"

#include "TarnwickRender/CKVOperator.h"

#include <mutex>
#include <vector>

namespace Kelvor {
namespace {

// How many create/initialize/destroy rounds the cycle test runs; a leak
// check under LeakSanitizer sets TARNWICK_CONTEXT_CYCLES=100.
int cycleCount()
{
    char const* text = std::getenv("TARNWICK_CONTEXT_CYCLES");
    int const count = text ? std::atoi(text) : 0;
    return count > 0 ? count : 20;
}

class CountingOperator : public CKVOperator
{
public:
    void tick(unsigned int milliseconds) override
    {
        mTicks.fetch_add(1);
        mLastMs.store(milliseconds);
    }
    std::atomic<unsigned int> mTicks{0};
    std::atomic<unsigned int> mLastMs{0};
};

using RenderContextFrameGLTest = RenderContextFixture;

TEST_F(RenderContextFrameGLTest, TheTimerDrawsFramesInTheBackgroundColour)
{
    CKVRenderConfig config;
    CKVBackGroundConfig background;
    background.setBackGroundColor(CKVPoint3D(0.2, 0.4, 0.6));
    config.setBackGroundConfig(background);
    mScene.setRenderConfig(config);
    kv_shared_ptr<CountingOperator> op = new CountingOperator;
    mScene.setOperator(op.get());

    ASSERT_NE(start(), nullptr);
    ASSERT_TRUE(waitForFrames(3));
    EXPECT_GE(op->mTicks.load(), 3u);
    // Milliseconds since the timer started, growing from tick to tick.
    EXPECT_GT(op->mLastMs.load(), 0u);

    unsigned char rgb[3] = {0, 0, 0};
    ASSERT_TRUE(mHost->readPixel(kWidth / 2, kHeight / 2, rgb));
    EXPECT_NEAR(rgb[0], 51, 2);
    EXPECT_NEAR(rgb[1], 102, 2);
    EXPECT_NEAR(rgb[2], 153, 2);
    mScene.setOperator(nullptr);
}

TEST_F(RenderContextFrameGLTest, CommandsFromAnotherThreadRunInOrderBeforeTheFrame)
{
    ASSERT_NE(start(), nullptr);
    std::mutex mutex;
    std::vector<int> order;
    std::vector<unsigned int> framesSeen;
    FrameCounter* counter = mCounter.get();

    // One batch: every command of it must run in one drain, before one frame.
    std::thread writer([&] {
        CKVRenderCommandCache* cache = mContext->getRenderCommandCache();
        std::vector<kv_shared_ptr<ProbeCommand>> commands;
        for (int i = 0; i < 8; ++i) {
            commands.push_back(new ProbeCommand([&, i](CKVRenderContext*) {
                std::lock_guard<std::mutex> lock(mutex);
                order.push_back(i);
                framesSeen.push_back(counter->frames());
                // A failed dispatch still wakes a waiting writer.
                return i % 2 == 0;
            }));
            cache->write(commands.back().get());
        }
        commands.back()->setSync(true);
        cache->finish();
        EXPECT_TRUE(commands.back()->wait(10000));
        for (auto const& command : commands)
            EXPECT_TRUE(command->isSignalled());
    });
    writer.join();

    std::lock_guard<std::mutex> lock(mutex);
    ASSERT_EQ(order.size(), 8u);
    for (int i = 0; i < 8; ++i)
        EXPECT_EQ(order[i], i);
    for (unsigned int frames : framesSeen)
        EXPECT_EQ(frames, framesSeen.front());
}

TEST_F(RenderContextFrameGLTest, DestroyWhileAHostThreadWritesStopsTheTicks)
{
    ASSERT_NE(start(), nullptr);
    ASSERT_TRUE(waitForFrames(2));
    kv_shared_ptr<CKVRenderCommandCache> cache = mContext->getRenderCommandCache();
    std::atomic<bool> stop{false};
    std::atomic<unsigned int> written{0};
    std::thread writer([&] {
        while (!stop.load()) {
            kv_shared_ptr<ProbeCommand> command = new ProbeCommand([](CKVRenderContext*) { return true; });
            cache->write(command.get());
            cache->finish();
            written.fetch_add(1);
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(100));

    EXPECT_TRUE(mContext->destroy());
    unsigned int const frames = mCounter->frames();
    std::this_thread::sleep_for(std::chrono::milliseconds(150));
    stop.store(true);
    writer.join();

    EXPECT_GT(written.load(), 10u);
    EXPECT_EQ(mCounter->frames(), frames);
    EXPECT_EQ(mContext->getViewer(), nullptr);
    EXPECT_FALSE(mContext->destroy());
}

TEST_F(RenderContextFrameGLTest, ContextsComeAndGoOnOneWindow)
{
    int const cycles = cycleCount();
    for (int cycle = 0; cycle < cycles; ++cycle) {
        mCounter = new FrameCounter;
        ASSERT_NE(start(), nullptr) << "cycle " << cycle;
        ASSERT_TRUE(waitForFrames(1)) << "cycle " << cycle;
        CKVRenderContext* context = mContext;
        mContext = nullptr;
        EXPECT_TRUE(context->destroy());
        ASSERT_TRUE(CKVRenderCallback::destroyRenderContext(context)) << "cycle " << cycle;
    }
}

TEST_F(RenderContextFrameGLTest, TheDestroyFactoryAloneTearsARunningContextDown)
{
    ASSERT_NE(start(), nullptr);
    ASSERT_TRUE(waitForFrames(1));
    CKVRenderContext* context = mContext;
    mContext = nullptr;
    // The host may skip destroy: deleting the context stops its timer first.
    EXPECT_TRUE(CKVRenderCallback::destroyRenderContext(context));
    unsigned int const frames = mCounter->frames();
    std::this_thread::sleep_for(std::chrono::milliseconds(60));
    EXPECT_EQ(mCounter->frames(), frames);
}

} // namespace
} // namespace Kelvor
