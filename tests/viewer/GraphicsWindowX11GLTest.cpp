#include <gtest/gtest.h>

#include "viewer/CKVTickTarget.h"

#include "ViewerOnHostWindow.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

namespace Kelvor {
namespace {

using namespace viewertest;
using namespace std::chrono_literals;

constexpr int kWidth = 96;
constexpr int kHeight = 64;

// Records each tick; optionally renders a frame in it, as the render
// context does.
class RecordingTarget : public CKVTickTarget
{
public:
    explicit RecordingTarget(ViewerOnHostWindow* renderInto = nullptr)
        : mRenderInto(renderInto)
    {
    }

    void onTick(unsigned int milliseconds) override
    {
        if (mRenderInto)
            mRenderInto->frame();
        std::lock_guard<std::mutex> lock(mMutex);
        mTicks.push_back(milliseconds);
        mThreads.push_back(std::this_thread::get_id());
        mChanged.notify_all();
    }

    // Waits until `count` ticks have arrived; false after `limit`.
    bool waitFor(std::size_t count, std::chrono::milliseconds limit = 20000ms)
    {
        std::unique_lock<std::mutex> lock(mMutex);
        return mChanged.wait_for(lock, limit, [&] { return mTicks.size() >= count; });
    }

    std::vector<unsigned int> ticks() const
    {
        std::lock_guard<std::mutex> lock(mMutex);
        return mTicks;
    }

    std::vector<std::thread::id> threads() const
    {
        std::lock_guard<std::mutex> lock(mMutex);
        return mThreads;
    }

private:
    ViewerOnHostWindow* mRenderInto;
    mutable std::mutex mMutex;
    std::condition_variable mChanged;
    std::vector<unsigned int> mTicks;
    std::vector<std::thread::id> mThreads;
};

class CKVGraphicsWindowX11GLTest : public ViewerOnHostWindowTest<kWidth, kHeight>
{
};

TEST_F(CKVGraphicsWindowX11GLTest, AttachesToTheHostWindowAndLeavesItOnClose)
{
    CKVGraphicsWindowX11* window = mSetup->window();
    EXPECT_EQ(window->getWindow(), mSetup->host().window());
    // Size comes from the host's window, not from the traits asked for.
    EXPECT_EQ(window->getTraits()->width, kWidth);
    EXPECT_EQ(window->getTraits()->height, kHeight);

    ASSERT_TRUE(window->makeCurrent());
    EXPECT_NE(glGetString(GL_VERSION), nullptr);
    window->releaseContext();

    mSetup->close();
    EXPECT_TRUE(mSetup->host().exists());
}

TEST_F(CKVGraphicsWindowX11GLTest, TimerRendersFramesEveryTwentyMillisecondsOnItsOwnThread)
{
    RecordingTarget target(mSetup.get());
    CKVGraphicsWindowX11* window = mSetup->window();
    window->setTickTarget(&target);
    window->startTimer();
    EXPECT_TRUE(window->isTimerRunning());
    ASSERT_TRUE(target.waitFor(8));
    window->stopTimer();
    EXPECT_FALSE(window->isTimerRunning());

    std::vector<unsigned int> const ticks = target.ticks();
    // Milliseconds since the start, not per frame: they only grow.
    for (std::size_t i = 1; i < ticks.size(); ++i)
        EXPECT_GT(ticks[i], ticks[i - 1]);
    EXPECT_GE(ticks.front(), 15u);
    // A period of 20 ms, with room for a loaded machine.
    double const period = double(ticks.back() - ticks.front()) / double(ticks.size() - 1);
    EXPECT_GE(period, 18.0);
    EXPECT_LE(period, 80.0);
    for (std::thread::id const& id : target.threads())
        EXPECT_NE(id, std::this_thread::get_id());

    // No tick after stop has returned.
    std::size_t const count = ticks.size();
    std::this_thread::sleep_for(100ms);
    EXPECT_EQ(target.ticks().size(), count);

    // The frames drawn on the timer's thread reached the window.
    osg::ref_ptr<osg::Image> shown = mSetup->host().shown();
    ASSERT_TRUE(shown.valid());
    EXPECT_TRUE(near(pixelAt(*shown, kWidth / 2, kHeight / 2), kQuadColour));
}

TEST_F(CKVGraphicsWindowX11GLTest, SecondStartKeepsTheRunningTimerAndItsClock)
{
    RecordingTarget target;
    CKVGraphicsWindowX11* window = mSetup->window();
    window->setTickTarget(&target);
    window->startTimer();
    ASSERT_TRUE(target.waitFor(5));
    std::size_t const before = target.ticks().size();
    window->startTimer();
    ASSERT_TRUE(target.waitFor(before + 2));
    window->stopTimer();

    std::vector<unsigned int> const ticks = target.ticks();
    EXPECT_GT(ticks[before], ticks[before - 1]);
    EXPECT_GE(ticks[before], 80u);
}

TEST_F(CKVGraphicsWindowX11GLTest, NoTicksWithoutTargetOrAfterTheWindowIsGone)
{
    RecordingTarget target;
    CKVGraphicsWindowX11* window = mSetup->window();
    window->startTimer();
    std::this_thread::sleep_for(80ms);
    EXPECT_TRUE(target.ticks().empty());

    window->setTickTarget(&target);
    ASSERT_TRUE(target.waitFor(2));
    // Dropping the window (viewer first) stops its timer.
    mSetup->close();
    std::size_t const count = target.ticks().size();
    std::this_thread::sleep_for(100ms);
    EXPECT_EQ(target.ticks().size(), count);
}

} // namespace
} // namespace Kelvor
