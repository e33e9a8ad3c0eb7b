#include "apps/view/ViewWindow.h"

#include <X11/Xutil.h>

namespace Kelvor {

namespace {

// Multisampling of the live window, as captures have it; 4 is what Mesa's
// software renderer offers, and a server without it gives a plain window.
constexpr int kWindowSamples = 4;

} // namespace

ViewWindow::ViewWindow(Display* display)
    : mDisplay(display)
{
}

ViewWindow::~ViewWindow()
{
    destroy();
}

bool ViewWindow::create(int width, int height, std::string const& title, std::string& error)
{
    X11HostWindow::Settings settings;
    settings.width = width;
    settings.height = height;
    settings.eventMask =
        ExposureMask | KeyPressMask | KeyReleaseMask | ButtonPressMask | ButtonReleaseMask | PointerMotionMask;
    settings.title = title;
    settings.samples = kWindowSamples;
    if (!mWindow.create(mDisplay, settings, error))
        return false;
    mDeleteMessage = XInternAtom(mDisplay, "WM_DELETE_WINDOW", False);
    XSetWMProtocols(mDisplay, mWindow.window(), &mDeleteMessage, 1);
    mWidth = width;
    mHeight = height;
    mData = CKVWindowDataX11(mDisplay, mWindow.window(), width, height);
    mData.setSamples(mWindow.samples());
    return true;
}

void ViewWindow::destroy()
{
    mWindow.destroy();
    // The display may be closed after this; the window is not made again.
    mDisplay = nullptr;
}

bool ViewWindow::pumpEvents(std::function<void(XEvent const&)> const& handle)
{
    while (mWindow.valid() && XPending(mDisplay) > 0) {
        XEvent event;
        XNextEvent(mDisplay, &event);
        if (event.type == ClientMessage && static_cast<Atom>(event.xclient.data.l[0]) == mDeleteMessage) {
            mClosed = true;
            continue;
        }
        if (event.type == ConfigureNotify) {
            mWidth = event.xconfigure.width;
            mHeight = event.xconfigure.height;
        }
        handle(event);
    }
    return !mClosed;
}

} // namespace Kelvor
