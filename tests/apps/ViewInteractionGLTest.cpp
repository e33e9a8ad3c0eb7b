// The viewer's window loop driven the way a user drives it: X input events
// on the program's own window, through the event handler into the host
// scene, the operator and the render commands.
// Before the X headers: their macros (None, Bool) break gtest's own names.
#include <gtest/gtest.h>

#include "ViewProgramRunner.h"

#include "support/DisplayTest.h"

#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <X11/keysym.h>

#include "support/XDisplayRetry.h"

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <thread>

using namespace Kelvor;

namespace {

Window findWindow(Display* display, Window from, char const* title)
{
    char* name = nullptr;
    if (XFetchName(display, from, &name) && name) {
        bool const match = std::strcmp(name, title) == 0;
        XFree(name);
        if (match)
            return from;
    }
    Window root = 0;
    Window parent = 0;
    Window* children = nullptr;
    unsigned int count = 0;
    if (!XQueryTree(display, from, &root, &parent, &children, &count))
        return 0;
    Window found = 0;
    for (unsigned int i = 0; i < count && !found; ++i)
        found = findWindow(display, children[i], title);
    if (children)
        XFree(children);
    return found;
}

class ViewInteractionGLTest : public DisplayTest
{
protected:
    void SetUp() override
    {
        DisplayTest::SetUp();
        if (!displayReady())
            return;
        mDisplay = openTestDisplay();
        ASSERT_NE(mDisplay, nullptr);
    }
    void TearDown() override
    {
        if (mDisplay)
            XCloseDisplay(mDisplay);
    }

    void send(Window window, int type, unsigned int detail, int x, int y, unsigned int state)
    {
        XEvent event{};
        event.type = type;
        if (type == KeyPress || type == KeyRelease) {
            event.xkey.window = window;
            event.xkey.root = DefaultRootWindow(mDisplay);
            event.xkey.keycode = detail;
            event.xkey.state = state;
            event.xkey.same_screen = True;
            XSendEvent(mDisplay, window, False, KeyPressMask | KeyReleaseMask, &event);
        } else if (type == MotionNotify) {
            event.xmotion.window = window;
            event.xmotion.x = x;
            event.xmotion.y = y;
            event.xmotion.state = state;
            event.xmotion.same_screen = True;
            XSendEvent(mDisplay, window, False, PointerMotionMask, &event);
        } else {
            event.xbutton.window = window;
            event.xbutton.button = detail;
            event.xbutton.x = x;
            event.xbutton.y = y;
            event.xbutton.state = state;
            event.xbutton.same_screen = True;
            XSendEvent(mDisplay, window, False, ButtonPressMask | ButtonReleaseMask, &event);
        }
        XFlush(mDisplay);
    }

    void key(Window window, KeySym symbol)
    {
        unsigned int const code = XKeysymToKeycode(mDisplay, symbol);
        send(window, KeyPress, code, 0, 0, 0);
        send(window, KeyRelease, code, 0, 0, 0);
    }

    Display* mDisplay = nullptr;
};

} // namespace

TEST_F(ViewInteractionGLTest, KeysClicksDragsAndWheelReachTheSceneAndQKeyEndsCleanly)
{
    ViewProcess const process = startViewProgram({"--builtin", "--size", "320x240"});
    ASSERT_GT(process.pid, 0);
    Window window = 0;
    auto const deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (!window && std::chrono::steady_clock::now() < deadline) {
        window = findWindow(mDisplay, DefaultRootWindow(mDisplay), "tarnwick-view - built-in building");
        if (!window)
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    if (!window) {
        ::kill(process.pid, SIGTERM);
        finishViewProgram(process);
        FAIL() << "the viewer's window did not appear";
    }

    key(window, XK_s);
    key(window, XK_b);
    // A click on the house: the answer arrives asynchronously.
    send(window, ButtonPress, Button1, 160, 120, 0);
    send(window, ButtonRelease, Button1, 160, 120, Button1Mask);
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
    EXPECT_NE(run.out.find("style: shaded with edges"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("background: white"), std::string::npos) << run.out;
    // Exactly one pick: the drag is no click.
    std::size_t const first = run.out.find("picked");
    ASSERT_NE(first, std::string::npos) << run.out;
    EXPECT_EQ(run.out.find("picked", first + 1), std::string::npos) << run.out;
}
