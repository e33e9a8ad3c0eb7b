#include "TarnwickRender/CKVRenderCommandCache.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

using namespace Kelvor;

namespace {

// A command that knows who wrote it and in which order, and counts how often
// the reader dispatched it.
class TaggedCommand : public CKVRenderCommand
{
public:
    TaggedCommand(int writer, int sequence, std::atomic<int>* destroyed = nullptr)
        : mWriter(writer), mSequence(sequence), mDestroyed(destroyed)
    {
    }
    ~TaggedCommand() override
    {
        if (mDestroyed)
            ++*mDestroyed;
    }
    ID getID() const override { return kSetTerrainHeight; }

    int mWriter;
    int mSequence;
    std::atomic<int> mDispatched{0};
    int mResult = 0; // written by the reader before it signals
    std::atomic<int>* mDestroyed;
};

std::vector<int> sequencesOf(CKVRenderCommandCache::CommandList const& list)
{
    std::vector<int> out;
    for (auto const& command : list)
        out.push_back(static_cast<TaggedCommand*>(command.get())->mSequence);
    return out;
}

} // namespace

TEST(CommandCacheSpineTest, NothingIsReadableBeforeFinishAndReadIsOldestFirst)
{
    CKVRenderCommandCache cache;
    CKVRenderCommandCache::CommandList list;
    list.push_back(new TaggedCommand(0, -1)); // what the caller had stays in front

    for (int i = 0; i < 3; ++i)
        EXPECT_TRUE(cache.write(new TaggedCommand(0, i)));
    EXPECT_EQ(0u, cache.read(list, false));
    EXPECT_EQ(0u, cache.read(list, true));
    EXPECT_EQ(1u, list.size());

    cache.finish();
    cache.write(new TaggedCommand(0, 3)); // a new, still open batch
    EXPECT_EQ(3u, cache.read(list, false));
    EXPECT_EQ((std::vector<int>{-1, 0, 1, 2}), sequencesOf(list));

    EXPECT_EQ(0u, cache.read(list, false)); // read moves: nothing is read twice
    cache.finish();
    EXPECT_EQ(1u, cache.read(list, true));
    EXPECT_EQ((std::vector<int>{-1, 0, 1, 2, 3}), sequencesOf(list));
    EXPECT_FALSE(cache.write(nullptr));
}

TEST(CommandCacheSpineTest, CacheKeepsCommandsAliveUntilTheReaderDropsThem)
{
    std::atomic<int> destroyed{0};
    CKVRenderCommandCache cache;
    cache.write(new TaggedCommand(0, 0, &destroyed)); // count 0: only the cache holds it
    cache.finish();
    EXPECT_EQ(0, destroyed.load());
    {
        CKVRenderCommandCache::CommandList list;
        cache.read(list, false);
        EXPECT_EQ(1u, list.front()->refCount());
        EXPECT_EQ(0, destroyed.load());
    }
    EXPECT_EQ(1, destroyed.load());

    // Commands never read die with the cache.
    {
        CKVRenderCommandCache other;
        other.write(new TaggedCommand(0, 0, &destroyed));
        other.write(new TaggedCommand(0, 1, &destroyed));
        other.finish();
        other.write(new TaggedCommand(0, 2, &destroyed));
    }
    EXPECT_EQ(4, destroyed.load());
}

TEST(CommandCacheSpineTest, SignalIsLatchedAndWaitTimesOutWithoutIt)
{
    kv_shared_ptr<TaggedCommand> command(new TaggedCommand(0, 0));
    auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(command->wait(30));
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(25));

    command->signal(); // before anyone waits
    EXPECT_TRUE(command->wait(0));
    EXPECT_TRUE(command->wait());
    command->resetSignal();
    EXPECT_FALSE(command->wait(0));
}

TEST(CommandCacheSpineTest, SubmitAndWaitReturnsOnceTheRenderThreadSignalled)
{
    CKVRenderCommandCache cache;
    kv_shared_ptr<TaggedCommand> command(new TaggedCommand(0, 0));
    std::atomic<bool> stop{false};

    std::thread renderThread([&] {
        while (!stop) {
            CKVRenderCommandCache::CommandList list;
            cache.read(list, false);
            for (auto& c : list) {
                static_cast<TaggedCommand*>(c.get())->mResult = 42;
                c->signal();
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    });

    EXPECT_TRUE(cache.submitAndWait(command.get(), 10000));
    EXPECT_TRUE(command->getSync());
    EXPECT_EQ(42, command->mResult); // the reader's write is visible after the wait

    // A second submission of the same command waits for a second signal.
    command->mResult = 0;
    EXPECT_TRUE(cache.submitAndWait(command.get(), 10000));
    EXPECT_EQ(42, command->mResult);

    stop = true;
    renderThread.join();
    EXPECT_FALSE(cache.submitAndWait(nullptr, 0));
}

TEST(CommandCacheSpineTest, ManyWritersOneReader)
{
    constexpr int kWriters = 4;
    constexpr int kPerWriter = 300;
    CKVRenderCommandCache cache;
    std::atomic<int> syncFailures{0};
    std::atomic<int> destroyed{0};
    std::vector<std::vector<kv_shared_ptr<TaggedCommand>>> written(kWriters);
    for (auto& w : written)
        w.reserve(kPerWriter);

    std::atomic<bool> readerFailed{false};
    std::thread reader([&] {
        std::vector<int> nextSequence(kWriters, 0);
        int total = 0;
        auto const deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
        while (total < kWriters * kPerWriter) {
            if (std::chrono::steady_clock::now() > deadline) {
                readerFailed = true;
                return;
            }
            CKVRenderCommandCache::CommandList list;
            cache.read(list, (total & 1) != 0);
            for (auto& c : list) {
                auto* tagged = static_cast<TaggedCommand*>(c.get());
                if (tagged->mSequence != nextSequence[tagged->mWriter])
                    readerFailed = true; // a writer's order was broken or a command repeated
                nextSequence[tagged->mWriter] = tagged->mSequence + 1;
                tagged->mResult = tagged->mSequence * 2;
                ++tagged->mDispatched;
                c->signal();
                ++total;
            }
            std::this_thread::yield();
        }
    });

    std::vector<std::thread> writers;
    for (int w = 0; w < kWriters; ++w) {
        writers.emplace_back([&, w] {
            for (int i = 0; i < kPerWriter; ++i) {
                kv_shared_ptr<TaggedCommand> command(new TaggedCommand(w, i, &destroyed));
                written[w].push_back(command);
                if (i % 7 == 3) {
                    // A synchronous command also publishes this writer's open commands.
                    if (!cache.submitAndWait(command.get(), 20000) || command->mResult != i * 2)
                        ++syncFailures;
                } else {
                    cache.write(command.get());
                    if (i % 5 == 0)
                        cache.finish();
                }
            }
            cache.finish();
        });
    }
    for (auto& t : writers)
        t.join();
    reader.join();

    EXPECT_FALSE(readerFailed);
    EXPECT_EQ(0, syncFailures.load());
    for (auto const& perWriter : written) {
        ASSERT_EQ(static_cast<size_t>(kPerWriter), perWriter.size());
        for (auto const& command : perWriter) {
            EXPECT_EQ(1, command->mDispatched.load());
            EXPECT_TRUE(command->isSignalled());
            EXPECT_EQ(1u, command->refCount()); // the cache let go of every command
        }
    }
    EXPECT_EQ(0u, cache.pendingCount());
    EXPECT_EQ(0u, cache.readableCount());
    written.clear();
    EXPECT_EQ(kWriters * kPerWriter, destroyed.load());
}
