#pragma once

#include "TarnwickRender/CKVWindowData.h"

namespace Kelvor {

// Window data of an X11 window. The display connection and the window belong
// to the host and outlive the render context that uses them. The display is
// kept as `void*` (it is a `Display*`) so that X headers stay out of the host.
class CKVWindowDataX11 : public CKVWindowData
{
    KV_DECLARE_RUNTIME_CLASS(CKVWindowDataX11)
public:
    CKVWindowDataX11();
    CKVWindowDataX11(void* display, unsigned long window, int width, int height);
    CKVWindowDataX11(CKVWindowDataX11 const&) = default;
    CKVWindowDataX11& operator=(CKVWindowDataX11 const&) = default;
    ~CKVWindowDataX11() override;

    void* getDisplay() const { return mDisplay; }
    unsigned long getWindow() const { return mWindow; }
    void setDisplay(void* display) { mDisplay = display; }
    void setWindow(unsigned long window) { mWindow = window; }

private:
    void* mDisplay = nullptr;
    unsigned long mWindow = 0;
};

} // namespace Kelvor
