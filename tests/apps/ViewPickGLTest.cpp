// Picking in the viewer program as a user does it: clicks on the FZK-Haus
// in the program's own window, answered through CKVRCPickSelectObject and
// printed as the IFC product under the pointer.
// Before the X headers: their macros (None, Bool) break gtest's own names.
#include <gtest/gtest.h>

#include "ViewProgramRunner.h"

#include "support/DisplayTest.h"

#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <X11/keysym.h>

#include "support/XDisplayRetry.h"

#include <chrono>
#include <csignal>
#include <cstring>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

using namespace Kelvor;

namespace {

char const* const kHausPath = "/usr/share/assimp/models/IFC/AC14-FZK-Haus.ifc";
constexpr int kWidth = 320;
constexpr int kHeight = 240;

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

// The lines that answer picks, in the order of the clicks.
std::vector<std::string> pickLines(std::string const& output)
{
    std::vector<std::string> lines;
    std::istringstream in(output);
    std::string line;
    while (std::getline(in, line)) {
        if (line.rfind("picked", 0) == 0 || line == "nothing picked")
            lines.push_back(line);
    }
    return lines;
}

class ViewPickGLTest : public DisplayTest
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

    void button(Window window, int type, int x, int y, unsigned int state)
    {
        XEvent event{};
        event.type = type;
        event.xbutton.window = window;
        event.xbutton.button = Button1;
        event.xbutton.x = x;
        event.xbutton.y = y;
        event.xbutton.state = state;
        event.xbutton.same_screen = True;
        XSendEvent(mDisplay, window, False, ButtonPressMask | ButtonReleaseMask, &event);
    }

    void click(Window window, int x, int y)
    {
        button(window, ButtonPress, x, y, 0);
        button(window, ButtonRelease, x, y, Button1Mask);
        XFlush(mDisplay);
    }

    void quit(Window window)
    {
        XEvent event{};
        event.xkey.window = window;
        event.xkey.root = DefaultRootWindow(mDisplay);
        event.xkey.keycode = XKeysymToKeycode(mDisplay, XK_q);
        event.xkey.same_screen = True;
        event.type = KeyPress;
        XSendEvent(mDisplay, window, False, KeyPressMask, &event);
        event.type = KeyRelease;
        XSendEvent(mDisplay, window, False, KeyReleaseMask, &event);
        XFlush(mDisplay);
    }

    Display* mDisplay = nullptr;
};

} // namespace

TEST_F(ViewPickGLTest, ClicksOnTheFzkHausNameItsWindowsAndTheSkyNamesNothing)
{
    if (::access(kHausPath, R_OK) != 0)
        GTEST_SKIP() << "the FZK-Haus sample (assimp-testmodels) is not installed";
    ViewProcess const process =
        startViewProgram({kHausPath, "--view", "front", "--size", std::to_string(kWidth) + "x" + std::to_string(kHeight)});
    ASSERT_GT(process.pid, 0);
    std::string const title = std::string("tarnwick-view - ") + kHausPath;
    Window window = 0;
    auto const deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (!window && std::chrono::steady_clock::now() < deadline) {
        window = findWindow(mDisplay, DefaultRootWindow(mDisplay), title.c_str());
        if (!window)
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    if (!window) {
        ::kill(process.pid, SIGTERM);
        finishViewProgram(process);
        FAIL() << "the viewer's window did not appear";
    }

    // First a corner of the sky, then a grid over the whole front view, where
    // the house fills the middle with a row of windows.
    click(window, 4, 4);
    unsigned int clicks = 1;
    for (int y = 30; y < kHeight; y += 12) {
        for (int x = 10; x < kWidth; x += 12) {
            click(window, x, y);
            ++clicks;
        }
    }
    // Every click is answered and printed before the program is told to end.
    auto const answered = std::chrono::steady_clock::now() + std::chrono::seconds(120);
    while (pickLines(readWhole(process.outPath)).size() < clicks && std::chrono::steady_clock::now() < answered)
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
    quit(window);

    ViewRun const run = finishViewProgram(process);
    EXPECT_EQ(run.signal, 0) << "crashed; stderr: " << run.err;
    EXPECT_EQ(run.exitCode, 0) << run.err;
    std::vector<std::string> const lines = pickLines(run.out);
    ASSERT_EQ(lines.size(), clicks) << run.out;
    EXPECT_EQ(lines.front(), "nothing picked");
    unsigned int windows = 0;
    unsigned int walls = 0;
    for (std::string const& line : lines) {
        if (line.rfind("picked IfcWindow ", 0) == 0) {
            ++windows;
            EXPECT_NE(line.find(" GUID "), std::string::npos) << line;
        }
        if (line.rfind("picked IfcWall", 0) == 0)
            ++walls;
    }
    RecordProperty("windowPicks", int(windows));
    RecordProperty("wallPicks", int(walls));
    EXPECT_GT(windows, 0u) << run.out;
    EXPECT_GT(walls, 0u) << run.out;
}
