#include "support/HostX11Window.h"

#include "support/XDisplayRetry.h"

#include <X11/Xutil.h>

#include <string>

namespace Kelvor {

namespace {

// The 8 bits of `mask` (a TrueColor channel mask) in `pixel`.
unsigned char channel(unsigned long pixel, unsigned long mask)
{
    int shift = 0;
    while (mask && !(mask & 1ul)) {
        mask >>= 1;
        ++shift;
    }
    return static_cast<unsigned char>((pixel >> shift) & 0xff);
}

// The rectangle as RGB, rows from the top; empty when X refuses it.
std::vector<unsigned char> grabRGB(Display* display, Window window, int x, int y, int width, int height)
{
    XImage* image = XGetImage(display, window, x, y, static_cast<unsigned int>(width),
                              static_cast<unsigned int>(height), AllPlanes, ZPixmap);
    if (!image)
        return {};
    std::vector<unsigned char> rgb(static_cast<std::size_t>(width) * height * 3);
    for (int row = 0; row < height; ++row)
        for (int column = 0; column < width; ++column) {
            unsigned long const pixel = XGetPixel(image, column, row);
            unsigned char* out = &rgb[(static_cast<std::size_t>(row) * width + column) * 3];
            out[0] = channel(pixel, image->red_mask);
            out[1] = channel(pixel, image->green_mask);
            out[2] = channel(pixel, image->blue_mask);
        }
    XDestroyImage(image);
    return rgb;
}

int ignoreErrors(Display*, XErrorEvent*)
{
    return 0;
}

} // namespace

HostX11Window::HostX11Window(int width, int height)
{
    mDisplay = openTestDisplay();
    X11HostWindow::Settings settings;
    settings.width = width;
    settings.height = height;
    std::string error;
    mWindow.create(mDisplay, settings, error);
}

HostX11Window::~HostX11Window()
{
    mWindow.destroy();
    if (mDisplay)
        XCloseDisplay(mDisplay);
}

bool HostX11Window::exists() const
{
    XSync(mDisplay, False);
    XErrorHandler previous = XSetErrorHandler(&ignoreErrors);
    XWindowAttributes attributes;
    Status const status = XGetWindowAttributes(mDisplay, mWindow.window(), &attributes);
    XSync(mDisplay, False);
    XSetErrorHandler(previous);
    return status != 0;
}

bool HostX11Window::readPixel(int x, int y, unsigned char rgb[3]) const
{
    std::vector<unsigned char> const pixel = grabRGB(mDisplay, mWindow.window(), x, y, 1, 1);
    if (pixel.empty())
        return false;
    rgb[0] = pixel[0];
    rgb[1] = pixel[1];
    rgb[2] = pixel[2];
    return true;
}

std::vector<unsigned char> HostX11Window::readWindow(int width, int height) const
{
    return grabRGB(mDisplay, mWindow.window(), 0, 0, width, height);
}

osg::ref_ptr<osg::Image> HostX11Window::shown() const
{
    XSync(mDisplay, False);
    XWindowAttributes attributes;
    XGetWindowAttributes(mDisplay, mWindow.window(), &attributes);
    int const width = attributes.width;
    int const height = attributes.height;
    std::vector<unsigned char> const rgb = grabRGB(mDisplay, mWindow.window(), 0, 0, width, height);
    if (rgb.empty())
        return nullptr;
    osg::ref_ptr<osg::Image> image = new osg::Image;
    image->allocateImage(width, height, 1, GL_RGBA, GL_UNSIGNED_BYTE);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            unsigned char const* in = &rgb[(static_cast<std::size_t>(y) * width + x) * 3];
            unsigned char* out = image->data(x, height - 1 - y);
            out[0] = in[0];
            out[1] = in[1];
            out[2] = in[2];
            out[3] = 255;
        }
    return image;
}

} // namespace Kelvor
