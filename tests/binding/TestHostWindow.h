#pragma once

// Before the X headers: their macros (None, Bool) break gtest's own names.
#include <gtest/gtest.h>

#include "TarnwickRender/CKVWindowDataX11.h"

#include <GL/glx.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>

#include "support/XDisplayRetry.h"

#include <vector>

namespace Kelvor {

// An X window made the way a host application makes one: its own display
// connection, a GLX-capable double-buffered visual, mapped on screen. The
// render context attaches to it through CKVWindowDataX11.
class TestHostWindow
{
public:
    TestHostWindow(int width, int height)
    {
        mDisplay = openTestDisplay();
        if (!mDisplay)
            return;
        int attributes[] = {GLX_RGBA, GLX_DOUBLEBUFFER, GLX_RED_SIZE, 8, GLX_GREEN_SIZE, 8, GLX_BLUE_SIZE, 8,
                            GLX_DEPTH_SIZE, 24, GLX_STENCIL_SIZE, 8, None};
        XVisualInfo* visual = glXChooseVisual(mDisplay, DefaultScreen(mDisplay), attributes);
        if (!visual)
            return;
        Window const root = RootWindow(mDisplay, visual->screen);
        XSetWindowAttributes set{};
        set.colormap = XCreateColormap(mDisplay, root, visual->visual, AllocNone);
        set.event_mask = StructureNotifyMask;
        set.border_pixel = 0;
        mColormap = set.colormap;
        mWindow = XCreateWindow(mDisplay, root, 0, 0, static_cast<unsigned int>(width),
                                static_cast<unsigned int>(height), 0, visual->depth, InputOutput, visual->visual,
                                CWColormap | CWEventMask | CWBorderPixel, &set);
        XFree(visual);
        XMapWindow(mDisplay, mWindow);
        XEvent event;
        do {
            XNextEvent(mDisplay, &event);
        } while (event.type != MapNotify || event.xmap.window != mWindow);
        mData = CKVWindowDataX11(mDisplay, mWindow, width, height);
    }

    ~TestHostWindow()
    {
        if (!mDisplay)
            return;
        if (mWindow)
            XDestroyWindow(mDisplay, mWindow);
        if (mColormap)
            XFreeColormap(mDisplay, mColormap);
        XCloseDisplay(mDisplay);
    }

    TestHostWindow(TestHostWindow const&) = delete;
    TestHostWindow& operator=(TestHostWindow const&) = delete;

    bool valid() const { return mWindow != 0; }
    CKVWindowDataX11 const& windowData() const { return mData; }
    CKVWindowDataX11& windowData() { return mData; }

    // The pixel at (x, y), counted from the top left, as the X server shows
    // it: what the host's user would see.
    bool readPixel(int x, int y, unsigned char rgb[3]) const
    {
        XImage* image = XGetImage(mDisplay, mWindow, x, y, 1, 1, AllPlanes, ZPixmap);
        if (!image)
            return false;
        unsigned long const pixel = XGetPixel(image, 0, 0);
        rgb[0] = static_cast<unsigned char>((pixel & image->red_mask) >> 16);
        rgb[1] = static_cast<unsigned char>((pixel & image->green_mask) >> 8);
        rgb[2] = static_cast<unsigned char>(pixel & image->blue_mask);
        XDestroyImage(image);
        return true;
    }

    // The whole window in one request, rows from the top, RGB: a per-pixel
    // read takes long enough for several frames to pass while it runs.
    std::vector<unsigned char> readWindow(int width, int height) const
    {
        std::vector<unsigned char> rgb(static_cast<std::size_t>(width) * height * 3);
        XImage* image = XGetImage(mDisplay, mWindow, 0, 0, static_cast<unsigned int>(width),
                                  static_cast<unsigned int>(height), AllPlanes, ZPixmap);
        if (!image)
            return {};
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x) {
                unsigned long const pixel = XGetPixel(image, x, y);
                unsigned char* out = &rgb[(static_cast<std::size_t>(y) * width + x) * 3];
                out[0] = static_cast<unsigned char>((pixel & image->red_mask) >> 16);
                out[1] = static_cast<unsigned char>((pixel & image->green_mask) >> 8);
                out[2] = static_cast<unsigned char>(pixel & image->blue_mask);
            }
        XDestroyImage(image);
        return rgb;
    }

private:
    Display* mDisplay = nullptr;
    Window mWindow = 0;
    Colormap mColormap = 0;
    CKVWindowDataX11 mData;
};

} // namespace Kelvor
