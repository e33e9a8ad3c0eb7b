#pragma once

#include "binding/CKVRenderContextImp.h"

namespace Kelvor {

class CKVGraphicsWindowX11;

// The render context on an X11 window that the host owns. It attaches
// OpenSceneGraph to that window on the host's X server, makes the timer that
// drives the frames, and captures frames off screen.
class CKVRenderContextX11Imp : public CKVRenderContextImp
{
    KV_DECLARE_RUNTIME_CLASS(CKVRenderContextX11Imp)
public:
    CKVRenderContextX11Imp();
    ~CKVRenderContextX11Imp() override;

    // False, with nothing done, without CKVWindowDataX11 carrying a window,
    // when already initialised, or when no GL window can be made on it.
    bool initialize(CKVGraphicsContext* graphicsContext) override;
    // Stops the timer first, so that no tick runs during or after the rest.
    bool destroy() override;
    bool getCapture(char const* path, CKVVec2<unsigned int> const& size, CKVCamera const& camera,
                    bool thumbnail) override;

    // Our window, or null before `initialize` and after `destroy`.
    CKVGraphicsWindowX11* getWindow() const;

private:
    void queryDriver(CKVGraphicsWindowX11& window);
};

} // namespace Kelvor
