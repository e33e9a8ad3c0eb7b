// Creates, initialises and destroys render contexts on host windows over and
// over, the way a host opens and closes documents. Built with LeakSanitizer:
// anything a cycle leaves behind grows with the cycle count and shows up in
// the report at exit.
#include "RenderContextFixture.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace Kelvor {
namespace {

// The leak check runs the program twice, with few cycles and with many, and
// compares what stays allocated at exit (see context_cycles_leak.sh).
int cycles()
{
    char const* text = std::getenv("TARNWICK_CYCLES");
    int const n = text ? std::atoi(text) : 0;
    return n > 0 ? n : 100;
}

class ContextCyclesTest : public RenderContextFixture
{
protected:
    // One document's life: a window, a context drawing frames on its tick,
    // then destroy and the host's destroy.
    void runOneCycle(int cycle)
    {
        mCounter = new FrameCounter;
        ASSERT_NE(start(), nullptr) << "cycle " << cycle;
        ASSERT_TRUE(waitForFrames(2)) << "cycle " << cycle;
        EXPECT_TRUE(mContext->destroy());
        CKVRenderContext* context = mContext;
        EXPECT_TRUE(CKVRenderCallback::destroyRenderContext(context));
        EXPECT_EQ(context, nullptr);
        mContext = nullptr;
        mHost = std::make_unique<TestHostWindow>(kWidth, kHeight);
        ASSERT_TRUE(mHost->valid());
        mGraphicsContext = CKVGraphicsContext(&mHost->windowData(), &mScene);
    }
};

TEST_F(ContextCyclesTest, HundredCreateInitializeDestroyCycles)
{
    int const count = cycles();
    for (int cycle = 0; cycle < count && !HasFatalFailure(); ++cycle)
        runOneCycle(cycle);
}

} // namespace
} // namespace Kelvor
