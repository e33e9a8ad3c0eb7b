#include "bench/CKVBenchWindow.h"

#include <GL/glx.h>
#include <X11/Xutil.h>

namespace Kelvor {

CKVBenchWindow::CKVBenchWindow(int width, int height)
{
    mDisplay = XOpenDisplay(nullptr);
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
    mWindow = XCreateWindow(mDisplay, root, 0, 0, static_cast<unsigned int>(width), static_cast<unsigned int>(height),
                            0, visual->depth, InputOutput, visual->visual, CWColormap | CWEventMask | CWBorderPixel,
                            &set);
    XFree(visual);
    XMapWindow(mDisplay, mWindow);
    XEvent event;
    do {
        XNextEvent(mDisplay, &event);
    } while (event.type != MapNotify || event.xmap.window != mWindow);
    mData = CKVWindowDataX11(mDisplay, mWindow, width, height);
}

CKVBenchWindow::~CKVBenchWindow()
{
    if (!mDisplay)
        return;
    if (mWindow)
        XDestroyWindow(mDisplay, mWindow);
    if (mColormap)
        XFreeColormap(mDisplay, mColormap);
    XCloseDisplay(mDisplay);
}

} // namespace Kelvor
