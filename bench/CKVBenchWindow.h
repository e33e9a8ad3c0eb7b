#pragma once

#include "TarnwickRender/CKVWindowDataX11.h"

#include <X11/Xlib.h>

namespace Kelvor {

// The host application's window: its own X connection, a double-buffered
// GLX visual with depth and stencil, mapped on screen. The render context
// draws into it through CKVWindowDataX11.
class CKVBenchWindow
{
public:
    CKVBenchWindow(int width, int height);
    ~CKVBenchWindow();
    CKVBenchWindow(CKVBenchWindow const&) = delete;
    CKVBenchWindow& operator=(CKVBenchWindow const&) = delete;

    bool valid() const { return mWindow != 0; }
    CKVWindowDataX11& windowData() { return mData; }

private:
    Display* mDisplay = nullptr;
    Window mWindow = 0;
    Colormap mColormap = 0;
    CKVWindowDataX11 mData;
};

} // namespace Kelvor
