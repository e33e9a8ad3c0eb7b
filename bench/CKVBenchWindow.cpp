#include "bench/CKVBenchWindow.h"

#include <string>

namespace Kelvor {

CKVBenchWindow::CKVBenchWindow(int width, int height)
{
    mDisplay = XOpenDisplay(nullptr);
    X11HostWindow::Settings settings;
    settings.width = width;
    settings.height = height;
    std::string error;
    if (mWindow.create(mDisplay, settings, error))
        mData = CKVWindowDataX11(mDisplay, mWindow.window(), width, height);
}

CKVBenchWindow::~CKVBenchWindow()
{
    mWindow.destroy();
    if (mDisplay)
        XCloseDisplay(mDisplay);
}

} // namespace Kelvor
