#pragma once

// Before the X headers: their macros (None, Bool) break gtest's own names.
#include <gtest/gtest.h>

#include "apps/x11window/X11HostWindow.h"

#include <osg/Image>
#include <osg/ref_ptr>

#include <X11/Xlib.h>

#include <vector>

namespace Kelvor {

// A host application's window (X11HostWindow) on a display connection of
// its own. The tests attach the backend to it and read back what the X
// server shows, so that no GL read-back (whose front buffer need not be the
// visible one) can fake it.
class HostX11Window
{
public:
    HostX11Window(int width, int height);
    ~HostX11Window();
    HostX11Window(HostX11Window const&) = delete;
    HostX11Window& operator=(HostX11Window const&) = delete;

    bool valid() const { return mDisplay && mWindow.valid(); }
    Display* display() const { return mDisplay; }
    Window window() const { return mWindow.window(); }

    // False once the window has been destroyed (by anyone).
    bool exists() const;

    // The pixel at (x, y), counted from the top left: what the host's user
    // would see.
    bool readPixel(int x, int y, unsigned char rgb[3]) const;

    // The top-left width x height of the window in one request, rows from
    // the top, RGB; empty on failure. A per-pixel read takes long enough for
    // several frames to pass while it runs.
    std::vector<unsigned char> readWindow(int width, int height) const;

    // The whole window as RGBA with the bottom row first, as glReadPixels
    // gives it; null on failure.
    osg::ref_ptr<osg::Image> shown() const;

private:
    Display* mDisplay = nullptr;
    X11HostWindow mWindow;
};

} // namespace Kelvor
