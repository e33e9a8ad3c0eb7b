#pragma once

#include "apps/view/ViewCommandSink.h"
#include "apps/view/ViewContent.h"
#include "TarnwickRender/CKVGraphicsContext.h"
#include "TarnwickRender/CKVGraphicsModel.h"
#include "TarnwickRender/CKVRCPickSelectObject.h"
#include "TarnwickRender/CKVScene.h"
#include "TarnwickRender/CKVWindowDataX11.h"

#include <functional>
#include <mutex>
#include <string>
#include <vector>

namespace Kelvor {

class CKVRenderContext;

// One render context on the viewer's window, made and driven the way a
// BIM engine does it: through the host's factory, a graphics model whose
// field 0 holds the loaded content, and render commands written into the
// context's active cache. The backend's 20 ms tick draws; this class only
// writes commands. Everything here runs on the viewer's main thread.
class ViewSession : public ViewCommandSink
{
public:
    ViewSession();
    ~ViewSession() override;

    ViewSession(ViewSession const&) = delete;
    ViewSession& operator=(ViewSession const&) = delete;

    CKVScene& getScene() { return mScene; }

    // False with `error` set when the backend is missing or cannot attach
    // to the window; nothing is left running then.
    bool start(CKVWindowDataX11 const& window, ViewContent const& content, CKVCamera const& camera,
               CKVRenderConfig const& config, std::string& error);
    // Destroys the context: its timer stops and its GL objects go while the
    // window still exists. Safe to call twice.
    void stop();
    bool isRunning() const { return mContext != nullptr; }

    void applyCamera(CKVCamera const& camera) override;
    void zoom(CKVEvent const& event) override;
    void pick(CKVPoint3D const& pixel) override;
    void keyDown(CKVEvent const& event) override;

    void setKeyHandler(std::function<void(CKVEvent const&)> handler) { mKeyHandler = std::move(handler); }
    void applyRenderConfig(CKVRenderConfig const& config);
    void resize(int width, int height);

    // Renders `camera`'s view into `path` at the given size and waits for
    // it. False with `error` set when the backend wrote no file.
    bool capture(std::string const& path, int width, int height, CKVCamera const& camera, std::string& error);

    // Pick commands the render thread has answered since the last call.
    std::vector<kv_shared_ptr<CKVRCPickSelectObject>> takeAnsweredPicks();

private:
    void send(CKVRenderCommand* command);

    CKVScene mScene;
    CKVWindowDataX11 mWindowData;
    CKVGraphicsContext mGraphicsContext;
    kv_shared_ptr<CKVGraphicsModel> mModel;
    CKVRenderContext* mContext = nullptr;
    std::function<void(CKVEvent const&)> mKeyHandler;
    std::vector<kv_shared_ptr<CKVRCPickSelectObject>> mPendingPicks;
};

} // namespace Kelvor
