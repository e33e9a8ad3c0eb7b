#pragma once

// A window as the host application would own it: its own display
// connection, a GLX-capable visual, created and mapped before the backend is
// told about it. Header-only so that each GL test file can include it.

#include <gtest/gtest.h>

#include <osg/Image>

#include <GL/glx.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>

#include "support/XDisplayRetry.h"

#include <cstdlib>
#include <cstring>
#include <string>

namespace Kelvor {
namespace viewertest {

// The timer renders on its own thread while the test's thread also talks to
// X, so Xlib must be thread-aware before its first call.
inline int const kXlibThreads = XInitThreads();

// TARNWICK_REQUIRE_DISPLAY=1 turns a missing display into a failure.
inline bool displayRequired()
{
    char const* required = std::getenv("TARNWICK_REQUIRE_DISPLAY");
    return required && std::strcmp(required, "1") == 0;
}

// An X server without -noreset (Xvfb's default) resets whenever its last
// client leaves, and refuses connections while it does; one connection kept
// for the whole test program keeps the server from resetting between tests.
inline bool displayAvailable()
{
    static Display* const keepAlive = openTestDisplay();
    return keepAlive != nullptr;
}

// Base of the fixtures that need X: skips without a display, or fails when
// one is required. Derived SetUps return early when IsSkipped().
class HostDisplayTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        if (displayAvailable())
            return;
        if (displayRequired())
            FAIL() << "no X display (TARNWICK_REQUIRE_DISPLAY=1)";
        GTEST_SKIP() << "no X display; scripts/test starts Xvfb for these";
    }
};

class HostX11Window
{
public:
    HostX11Window(int width, int height)
    {
        mDisplay = openTestDisplay();
        if (!mDisplay)
            return;
        int attributes[] = {GLX_RGBA, GLX_DOUBLEBUFFER, GLX_RED_SIZE, 8, GLX_GREEN_SIZE, 8, GLX_BLUE_SIZE, 8,
                            GLX_DEPTH_SIZE, 24, None};
        XVisualInfo* visual = glXChooseVisual(mDisplay, DefaultScreen(mDisplay), attributes);
        if (!visual)
            return;
        Window root = RootWindow(mDisplay, visual->screen);
        XSetWindowAttributes windowAttributes{};
        windowAttributes.colormap = XCreateColormap(mDisplay, root, visual->visual, AllocNone);
        windowAttributes.border_pixel = 0;
        mColormap = windowAttributes.colormap;
        mWindow = XCreateWindow(mDisplay, root, 0, 0, static_cast<unsigned int>(width),
                                static_cast<unsigned int>(height), 0, visual->depth, InputOutput, visual->visual,
                                CWColormap | CWBorderPixel, &windowAttributes);
        XFree(visual);
        XMapWindow(mDisplay, mWindow);
        XSync(mDisplay, False);
    }

    ~HostX11Window()
    {
        if (!mDisplay)
            return;
        if (mWindow)
            XDestroyWindow(mDisplay, mWindow);
        if (mColormap)
            XFreeColormap(mDisplay, mColormap);
        XCloseDisplay(mDisplay);
    }

    HostX11Window(HostX11Window const&) = delete;
    HostX11Window& operator=(HostX11Window const&) = delete;

    bool valid() const { return mDisplay && mWindow; }
    Display* display() const { return mDisplay; }
    Window window() const { return mWindow; }

    // False once the window has been destroyed (by anyone).
    bool exists() const
    {
        XSync(mDisplay, False);
        XErrorHandler previous = XSetErrorHandler(&ignoreErrors);
        XWindowAttributes attributes;
        Status const status = XGetWindowAttributes(mDisplay, mWindow, &attributes);
        XSync(mDisplay, False);
        XSetErrorHandler(previous);
        return status != 0;
    }

    // What the window shows on screen, as RGBA with the bottom row first
    // like glReadPixels gives it. X's own copy, so that no GL read-back
    // (whose front buffer need not be the visible one) can fake it.
    osg::ref_ptr<osg::Image> shown() const
    {
        XSync(mDisplay, False);
        XWindowAttributes attributes;
        XGetWindowAttributes(mDisplay, mWindow, &attributes);
        XImage* grabbed = XGetImage(mDisplay, mWindow, 0, 0, static_cast<unsigned int>(attributes.width),
                                    static_cast<unsigned int>(attributes.height), AllPlanes, ZPixmap);
        if (!grabbed)
            return nullptr;
        osg::ref_ptr<osg::Image> image = new osg::Image;
        image->allocateImage(attributes.width, attributes.height, 1, GL_RGBA, GL_UNSIGNED_BYTE);
        for (int y = 0; y < attributes.height; ++y) {
            for (int x = 0; x < attributes.width; ++x) {
                unsigned long const pixel = XGetPixel(grabbed, x, y);
                unsigned char* out = image->data(x, attributes.height - 1 - y);
                out[0] = channel(pixel, grabbed->red_mask);
                out[1] = channel(pixel, grabbed->green_mask);
                out[2] = channel(pixel, grabbed->blue_mask);
                out[3] = 255;
            }
        }
        XDestroyImage(grabbed);
        return image;
    }

private:
    // The 8 bits of `mask` (a TrueColor channel mask) in `pixel`.
    static unsigned char channel(unsigned long pixel, unsigned long mask)
    {
        int shift = 0;
        while (mask && !(mask & 1ul)) {
            mask >>= 1;
            ++shift;
        }
        return static_cast<unsigned char>((pixel >> shift) & 0xff);
    }

    static int ignoreErrors(Display*, XErrorEvent*) { return 0; }

    Display* mDisplay = nullptr;
    Window mWindow = 0;
    Colormap mColormap = 0;
};

} // namespace viewertest
} // namespace Kelvor
