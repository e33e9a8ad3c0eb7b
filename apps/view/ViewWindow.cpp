#include "apps/view/ViewWindow.h"

#include <GL/glx.h>
#include <X11/Xutil.h>

namespace Kelvor {

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
    if (!mDisplay) {
        error = "no X display";
        return false;
    }
    int attributes[] = {GLX_RGBA, GLX_DOUBLEBUFFER, GLX_RED_SIZE, 8, GLX_GREEN_SIZE, 8, GLX_BLUE_SIZE, 8,
                        GLX_DEPTH_SIZE, 24, GLX_STENCIL_SIZE, 8, None};
    XVisualInfo* visual = glXChooseVisual(mDisplay, DefaultScreen(mDisplay), attributes);
    if (!visual) {
        error = "the X server offers no double-buffered OpenGL visual with depth and stencil";
        return false;
    }
    Window const root = RootWindow(mDisplay, visual->screen);
    XSetWindowAttributes set{};
    set.colormap = XCreateColormap(mDisplay, root, visual->visual, AllocNone);
    set.event_mask = StructureNotifyMask | ExposureMask | KeyPressMask | KeyReleaseMask | ButtonPressMask |
                     ButtonReleaseMask | PointerMotionMask;
    set.border_pixel = 0;
    mColormap = set.colormap;
    mWindow = XCreateWindow(mDisplay, root, 0, 0, static_cast<unsigned int>(width), static_cast<unsigned int>(height),
                            0, visual->depth, InputOutput, visual->visual, CWColormap | CWEventMask | CWBorderPixel,
                            &set);
    XFree(visual);
    if (!mWindow) {
        error = "cannot create the X window";
        return false;
    }
    XStoreName(mDisplay, mWindow, title.c_str());
    mDeleteMessage = XInternAtom(mDisplay, "WM_DELETE_WINDOW", False);
    XSetWMProtocols(mDisplay, mWindow, &mDeleteMessage, 1);
    XMapWindow(mDisplay, mWindow);
    // The context may only attach to a window the server shows.
    XEvent event;
    do {
        XWindowEvent(mDisplay, mWindow, StructureNotifyMask, &event);
    } while (event.type != MapNotify);
    mWidth = width;
    mHeight = height;
    mData = CKVWindowDataX11(mDisplay, mWindow, width, height);
    return true;
}

void ViewWindow::destroy()
{
    if (!mDisplay)
        return;
    if (mWindow) {
        XDestroyWindow(mDisplay, mWindow);
        mWindow = 0;
    }
    if (mColormap) {
        XFreeColormap(mDisplay, mColormap);
        mColormap = 0;
    }
    XFlush(mDisplay);
    // The display may be closed after this; the window is not made again.
    mDisplay = nullptr;
}

bool ViewWindow::pumpEvents(std::function<void(XEvent const&)> const& handle)
{
    while (mWindow && XPending(mDisplay) > 0) {
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
