// The viewer's window loop driven the way a user drives it: X input events
// on the program's own window, through the event handler into the host
// scene, the operator and the render commands.
#include "ViewWindowTest.h"

#include "apps/view/ViewWindow.h"

using namespace Kelvor;

namespace {

using ViewInteractionGLTest = apptest::ViewWindowTest;

} // namespace

TEST_F(ViewInteractionGLTest, KeysClicksDragsAndWheelReachTheSceneAndQKeyEndsCleanly)
{
    // A plain background: the sky cube is redrawn every frame, which in
    // software GL slows the frames more than this test waits.
    ViewProcess const process = startViewProgram({"--builtin", "--size", "320x240", "--background", "grey"});
    ASSERT_GT(process.pid, 0);
    Window const window = waitForWindow(process, "tarnwick-view - built-in building");
    ASSERT_NE(window, 0u) << "the viewer's window did not appear";

    key(window, XK_s);
    key(window, XK_b);
    // A click on the house: the answer arrives asynchronously.
    click(window, 160, 120);
    // An orbit drag and a wheel notch, which must not disturb anything.
    send(window, ButtonPress, Button1, 100, 100, 0);
    send(window, MotionNotify, 0, 180, 110, Button1Mask);
    send(window, ButtonRelease, Button1, 180, 110, Button1Mask);
    send(window, ButtonPress, Button4, 160, 120, 0);
    send(window, ButtonRelease, Button4, 160, 120, Button4Mask);
    std::this_thread::sleep_for(std::chrono::seconds(2));
    key(window, XK_q);

    ViewRun const run = finishViewProgram(process);
    EXPECT_EQ(run.signal, 0) << "crashed; stderr: " << run.err;
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_NE(run.out.find("keys: left drag orbit"), std::string::npos) << "the key help line is printed at start";
    EXPECT_NE(run.out.find("style: "), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("background: white"), std::string::npos) << run.out;
    // Exactly one pick: the drag is no click.
    std::size_t const first = run.out.find("picked");
    ASSERT_NE(first, std::string::npos) << run.out;
    EXPECT_EQ(run.out.find("picked", first + 1), std::string::npos) << run.out;
}

// Captures are multisampled; the live window must be too, or every edge in
// it shows its steps.
TEST_F(ViewInteractionGLTest, TheLiveWindowIsMultisampled)
{
    ViewWindow window(mDisplay);
    std::string error;
    ASSERT_TRUE(window.create(64, 64, "multisampled", error)) << error;
    EXPECT_GT(window.getWindowData().getSamples(), 1);
    window.destroy();
}
