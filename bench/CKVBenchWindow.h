#pragma once

#include "apps/x11window/X11HostWindow.h"
#include "TarnwickRender/CKVWindowDataX11.h"

#include <X11/Xlib.h>

namespace Kelvor {

// The host application's window on its own X connection. The render
// context draws into it through CKVWindowDataX11.
class CKVBenchWindow
{
public:
    CKVBenchWindow(int width, int height);
    ~CKVBenchWindow();
    CKVBenchWindow(CKVBenchWindow const&) = delete;
    CKVBenchWindow& operator=(CKVBenchWindow const&) = delete;

    bool valid() const { return mWindow.valid(); }
    CKVWindowDataX11& windowData() { return mData; }

private:
    Display* mDisplay = nullptr;
    X11HostWindow mWindow;
    CKVWindowDataX11 mData;
};

} // namespace Kelvor
