#pragma once

#include "support/HostX11Window.h"

#include "TarnwickRender/CKVWindowDataX11.h"

#include <GL/glx.h>
#include <X11/Xutil.h>

#include "support/XDisplayRetry.h"

namespace Kelvor {

// The shared host window, described as the host describes it to the render
// context: through CKVWindowDataX11.
class TestHostWindow : public HostX11Window
{
public:
    TestHostWindow(int width, int height)
        : HostX11Window(width, height)
    {
        if (valid())
            mData = CKVWindowDataX11(display(), window(), width, height);
    }

    CKVWindowDataX11 const& windowData() const { return mData; }
    CKVWindowDataX11& windowData() { return mData; }

private:
    CKVWindowDataX11 mData;
};

} // namespace Kelvor
