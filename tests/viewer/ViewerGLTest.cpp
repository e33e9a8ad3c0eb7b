#include <gtest/gtest.h>

#include "ViewerOnHostWindow.h"

namespace Kelvor {
namespace {

using namespace viewertest;

osg::Vec4 const kRed(1.0f, 0.0f, 0.0f, 1.0f);
osg::Vec4 const kGreen(0.0f, 1.0f, 0.0f, 1.0f);
constexpr int kSize = 64;

struct CountingDrawCallback : osg::Camera::DrawCallback
{
    void operator()(osg::RenderInfo&) const override { ++count; }
    mutable int count = 0;
};

class CKVViewerGLTest : public ViewerOnHostWindowTest<kSize, kSize>
{
};

TEST_F(CKVViewerGLTest, FrameWithoutSwapDrawsButLeavesTheVisibleBufferAlone)
{
    mSetup->camera()->setClearColor(kRed);
    mSetup->frame();
    osg::ref_ptr<osg::Image> shown = mSetup->host().shown();
    ASSERT_TRUE(shown.valid());
    ASSERT_TRUE(near(pixelAt(*shown, 1, 1), kRed));

    mSetup->camera()->setClearColor(kGreen);
    mSetup->viewer()->setSwapBuffers(false);
    mSetup->frame();
    osg::ref_ptr<osg::Image> front = mSetup->host().shown();
    osg::ref_ptr<osg::Image> back = mSetup->readBuffer(GL_BACK);
    EXPECT_TRUE(samePixels(*front, *shown)) << "the front buffer changed without a swap";
    // The frame itself was drawn in full, into the back buffer.
    EXPECT_TRUE(near(pixelAt(*back, 1, 1), kGreen));
    EXPECT_TRUE(near(pixelAt(*back, kSize / 2, kSize / 2), kQuadColour));

    mSetup->viewer()->setSwapBuffers(true);
    mSetup->frame();
    EXPECT_TRUE(near(pixelAt(*mSetup->host().shown(), 1, 1), kGreen));
}

TEST_F(CKVViewerGLTest, StatisticsAreWrittenForAFrameWithoutSwap)
{
    osg::Stats* stats = mSetup->viewer()->getViewerStats();
    stats->collectStats("update", true);
    stats->collectStats("scene", true);
    mSetup->viewer()->setSwapBuffers(false);
    mSetup->frame();

    unsigned int const frame = mSetup->viewer()->getFrameStamp()->getFrameNumber();
    double begin = -1.0;
    double end = -1.0;
    double taken = -1.0;
    double geodes = -1.0;
    EXPECT_TRUE(stats->getAttribute(frame, "Rendering traversals begin time ", begin));
    EXPECT_TRUE(stats->getAttribute(frame, "Rendering traversals end time ", end));
    EXPECT_TRUE(stats->getAttribute(frame, "Rendering traversals time taken", taken));
    EXPECT_GE(end, begin);
    EXPECT_DOUBLE_EQ(taken, end - begin);
    EXPECT_TRUE(stats->getAttribute(frame, "Number of unique Drawable", geodes));
    EXPECT_EQ(geodes, 1.0);
}

TEST_F(CKVViewerGLTest, FrameAfterTheWindowClosedDrawsNothingAndClearsRedraw)
{
    osg::ref_ptr<CountingDrawCallback> draws = new CountingDrawCallback;
    mSetup->camera()->setInitialDrawCallback(draws.get());
    mSetup->frame();
    ASSERT_EQ(draws->count, 1);

    // Release the scene's GL objects while the context still exists.
    mSetup->window()->makeCurrent();
    mSetup->scene()->releaseGLObjects(mSetup->window()->getState());
    mSetup->window()->releaseContext();
    mSetup->window()->close();

    mSetup->viewer()->requestRedraw();
    mSetup->frame();
    EXPECT_EQ(draws->count, 1);
    EXPECT_FALSE(mSetup->viewer()->getRequestRedraw());
    // The host's window is not the backend's to destroy.
    EXPECT_TRUE(mSetup->host().exists());
}

} // namespace
} // namespace Kelvor
