#pragma once

#include <X11/Xlib.h>

#include <string>

namespace Kelvor {

// An X window made the way a host application makes one for the render
// context: a double-buffered GLX visual with depth and stencil (and
// multisampling when asked for and offered), mapped, and shown by the server
// before anyone is told about it, so that whoever attaches next may draw at
// once. The display connection stays the caller's and must outlive the
// window.
class X11HostWindow
{
public:
    struct Settings
    {
        int width = 0;
        int height = 0;
        // Samples per pixel wanted; 0 for none. A server without such a
        // visual gives a window without multisampling.
        int samples = 0;
        // Events selected on top of StructureNotifyMask.
        long eventMask = 0;
        // The window manager's title; empty for none.
        std::string title;
    };

    X11HostWindow() = default;
    ~X11HostWindow();
    X11HostWindow(X11HostWindow const&) = delete;
    X11HostWindow& operator=(X11HostWindow const&) = delete;

    // False with `error` set when no suitable visual or window can be made.
    bool create(Display* display, Settings const& settings, std::string& error);
    void destroy();

    bool valid() const { return mWindow != 0; }
    Display* display() const { return mDisplay; }
    Window window() const { return mWindow; }
    // Samples per pixel of the visual the window got.
    int samples() const { return mSamples; }

private:
    Display* mDisplay = nullptr;
    Window mWindow = 0;
    Colormap mColormap = 0;
    int mSamples = 0;
};

} // namespace Kelvor
