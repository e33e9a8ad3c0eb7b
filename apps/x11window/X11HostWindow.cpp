#include "apps/x11window/X11HostWindow.h"

#include <GL/glx.h>
#include <X11/Xutil.h>

namespace Kelvor {

namespace {

constexpr int kColourBits = 8;
constexpr int kDepthBits = 24;
constexpr int kStencilBits = 8;

XVisualInfo* chooseVisual(Display* display, int samples)
{
    int attributes[] = {GLX_RGBA,
                        GLX_DOUBLEBUFFER,
                        GLX_RED_SIZE,
                        kColourBits,
                        GLX_GREEN_SIZE,
                        kColourBits,
                        GLX_BLUE_SIZE,
                        kColourBits,
                        GLX_DEPTH_SIZE,
                        kDepthBits,
                        GLX_STENCIL_SIZE,
                        kStencilBits,
                        GLX_SAMPLE_BUFFERS,
                        samples > 0 ? 1 : 0,
                        GLX_SAMPLES,
                        samples > 0 ? samples : 0,
                        None};
    return glXChooseVisual(display, DefaultScreen(display), attributes);
}

} // namespace

X11HostWindow::~X11HostWindow()
{
    destroy();
}

bool X11HostWindow::create(Display* display, Settings const& settings, std::string& error)
{
    destroy();
    if (!display) {
        error = "no X display";
        return false;
    }
    XVisualInfo* visual = chooseVisual(display, settings.samples);
    if (!visual && settings.samples > 0)
        visual = chooseVisual(display, 0);
    if (!visual) {
        error = "the X server offers no double-buffered OpenGL visual with depth and stencil";
        return false;
    }
    mSamples = 0;
    int sampleBuffers = 0;
    if (glXGetConfig(display, visual, GLX_SAMPLE_BUFFERS, &sampleBuffers) == 0 && sampleBuffers > 0)
        glXGetConfig(display, visual, GLX_SAMPLES, &mSamples);

    Window const root = RootWindow(display, visual->screen);
    XSetWindowAttributes set{};
    set.colormap = XCreateColormap(display, root, visual->visual, AllocNone);
    set.event_mask = StructureNotifyMask | settings.eventMask;
    set.border_pixel = 0;
    mDisplay = display;
    mColormap = set.colormap;
    mWindow = XCreateWindow(display, root, 0, 0, static_cast<unsigned int>(settings.width),
                            static_cast<unsigned int>(settings.height), 0, visual->depth, InputOutput,
                            visual->visual, CWColormap | CWEventMask | CWBorderPixel, &set);
    XFree(visual);
    if (!mWindow) {
        destroy();
        error = "cannot create the X window";
        return false;
    }
    if (!settings.title.empty())
        XStoreName(display, mWindow, settings.title.c_str());
    XMapWindow(display, mWindow);
    // The render context may only attach to a window the server shows. Only
    // the structure events are taken here; input stays queued for the caller.
    XEvent event;
    do {
        XWindowEvent(display, mWindow, StructureNotifyMask, &event);
    } while (event.type != MapNotify);
    return true;
}

void X11HostWindow::destroy()
{
    if (!mDisplay)
        return;
    if (mWindow)
        XDestroyWindow(mDisplay, mWindow);
    if (mColormap)
        XFreeColormap(mDisplay, mColormap);
    XFlush(mDisplay);
    mWindow = 0;
    mColormap = 0;
    mSamples = 0;
    mDisplay = nullptr;
}

} // namespace Kelvor
