#pragma once

#include "apps/x11window/X11HostWindow.h"
#include "TarnwickRender/CKVWindowDataX11.h"

#include <X11/Xlib.h>

#include <functional>
#include <string>

namespace Kelvor {

// The viewer's own X window (X11HostWindow) with the input events selected
// on the viewer's connection and the window manager's close button turned
// into a request to quit. The render context attaches to it through the
// window data and draws into it from its own connection.
class ViewWindow
{
public:
    explicit ViewWindow(Display* display);
    ~ViewWindow();

    ViewWindow(ViewWindow const&) = delete;
    ViewWindow& operator=(ViewWindow const&) = delete;

    // False with `error` set when no suitable visual or window can be made.
    bool create(int width, int height, std::string const& title, std::string& error);
    void destroy();

    CKVWindowDataX11 const& getWindowData() const { return mData; }
    int getWidth() const { return mWidth; }
    int getHeight() const { return mHeight; }

    // Hands each pending event to `handle`; size changes are tracked first.
    // False once the user has closed the window.
    bool pumpEvents(std::function<void(XEvent const&)> const& handle);
    bool isClosed() const { return mClosed; }

private:
    Display* mDisplay;
    X11HostWindow mWindow;
    Atom mDeleteMessage = 0;
    int mWidth = 0;
    int mHeight = 0;
    bool mClosed = false;
    CKVWindowDataX11 mData;
};

} // namespace Kelvor
