#pragma once

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
#include <string>
#include <thread>

namespace Kelvor {
namespace apptest {

// Drives the viewer program's own window the way a user does, with X input
// events sent from a connection of the test's own.
class ViewWindowTest : public DisplayTest
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

    // The program's window once it shows; 0 after a minute without it, when
    // the program has been ended.
    Window waitForWindow(ViewProcess const& process, std::string const& title)
    {
        Window window = 0;
        auto const deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
        while (!window && std::chrono::steady_clock::now() < deadline) {
            window = findWindow(DefaultRootWindow(mDisplay), title.c_str());
            if (!window)
                std::this_thread::sleep_for(std::chrono::milliseconds(100));
        }
        if (!window) {
            ::kill(process.pid, SIGTERM);
            finishViewProgram(process);
        }
        return window;
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

    void click(Window window, int x, int y)
    {
        send(window, ButtonPress, Button1, x, y, 0);
        send(window, ButtonRelease, Button1, x, y, Button1Mask);
    }

    Display* mDisplay = nullptr;

private:
    Window findWindow(Window from, char const* title)
    {
        char* name = nullptr;
        if (XFetchName(mDisplay, from, &name) && name) {
            bool const match = std::strcmp(name, title) == 0;
            XFree(name);
            if (match)
                return from;
        }
        Window root = 0;
        Window parent = 0;
        Window* children = nullptr;
        unsigned int count = 0;
        if (!XQueryTree(mDisplay, from, &root, &parent, &children, &count))
            return 0;
        Window found = 0;
        for (unsigned int i = 0; i < count && !found; ++i)
            found = findWindow(children[i], title);
        if (children)
            XFree(children);
        return found;
    }
};

} // namespace apptest
} // namespace Kelvor
