#include "apps/view/ViewSession.h"

#include "apps/view/ViewShadowCasters.h"

#include "TarnwickRender/CKVRCApplyCamera.h"
#include "TarnwickRender/CKVRCApplyRenderConfig.h"
#include "TarnwickRender/CKVRCGetCapture.h"
#include "TarnwickRender/CKVRCSetViewPort.h"
#include "TarnwickRender/CKVRCZoomCamera.h"
#include "TarnwickRender/CKVRenderCallback.h"
#include "TarnwickRender/CKVRenderCommandCache.h"
#include "TarnwickRender/CKVRenderContext.h"

#include <sys/stat.h>
#include <unistd.h>

namespace Kelvor {

namespace {

// A capture renders a full frame in software; a large one of a big model
// takes seconds, never minutes.
constexpr unsigned int kCaptureTimeoutMs = 300000;

} // namespace

ViewSession::ViewSession() = default;

ViewSession::~ViewSession()
{
    stop();
}

bool ViewSession::start(CKVWindowDataX11 const& window, ViewContent const& content, CKVCamera const& camera,
                        CKVRenderConfig const& config, std::string& error)
{
    stop();
    mWindowData = window;
    mScene.setRenderConfig(config);
    mScene.setCamera(camera);
    mScene.setViewportSize(window.getWidth(), window.getHeight());
    mGraphicsContext = CKVGraphicsContext(&mWindowData, &mScene);

    mContext = CKVRenderCallback::createRenderContext(-1);
    if (!mContext) {
        error = "the rendering backend is not loaded (no render context factory)";
        return false;
    }
    if (!mContext->initialize(&mGraphicsContext)) {
        error = "the rendering backend could not attach to the window (no OpenGL 4 context?)";
        CKVRenderCallback::destroyRenderContext(mContext);
        mContext = nullptr;
        return false;
    }
    ViewShadowCasters::mark(*content.root);
    mModel = new CKVGraphicsModel;
    mModel->setField(0, new CKVGraphicsModelField(content.root.get()));
    if (!mContext->setGraphicsModel(mModel.get())) {
        error = "the rendering backend refused the model";
        stop();
        return false;
    }
    mScene.setGraphicsModel(mModel.get());
    applyCamera(camera);
    return true;
}

void ViewSession::stop()
{
    if (!mContext)
        return;
    mScene.setOperator(nullptr);
    mContext->destroy();
    CKVRenderCallback::destroyRenderContext(mContext);
    mContext = nullptr;
    mScene.setGraphicsModel(nullptr);
    mModel = nullptr;
    mPendingPicks.clear();
}

void ViewSession::send(CKVRenderCommand* command)
{
    kv_shared_ptr<CKVRenderCommand> hold(command);
    if (!mContext)
        return;
    CKVRenderCommandCache* cache = mContext->getRenderCommandCache();
    if (!cache)
        return;
    cache->write(command);
    cache->finish();
}

void ViewSession::applyCamera(CKVCamera const& camera)
{
    send(new CKVRCApplyCamera(camera));
}

void ViewSession::zoom(CKVEvent const& event)
{
    send(new CKVRCZoomCamera(event));
}

void ViewSession::pick(CKVPoint3D const& pixel)
{
    kv_shared_ptr<CKVRCPickSelectObject> command(new CKVRCPickSelectObject(pixel));
    if (!mContext)
        return;
    mPendingPicks.push_back(command);
    send(command.get());
}

void ViewSession::keyDown(CKVEvent const& event)
{
    if (mKeyHandler)
        mKeyHandler(event);
}

void ViewSession::applyRenderConfig(CKVRenderConfig const& config)
{
    mScene.setRenderConfig(config);
    send(new CKVRCApplyRenderConfig(config));
}

void ViewSession::resize(int width, int height)
{
    if (width <= 0 || height <= 0)
        return;
    int oldWidth = 0;
    int oldHeight = 0;
    mScene.getViewportSize(oldWidth, oldHeight);
    if (oldWidth == width && oldHeight == height)
        return;
    mScene.setViewportSize(width, height);
    CKVCamera camera;
    mScene.getSafeCamera(camera);
    camera.setAspect(double(width) / height);
    mScene.setCamera(camera);
    send(new CKVRCSetViewPort(width, height));
    applyCamera(camera);
}

bool ViewSession::capture(std::string const& path, int width, int height, CKVCamera const& camera,
                          std::string& error)
{
    if (!mContext) {
        error = "no render context";
        return false;
    }
    // A file left from an earlier run must not pass for this one's.
    ::unlink(path.c_str());
    kv_shared_ptr<CKVRCGetCapture> command(new CKVRCGetCapture(
        path.c_str(), CKVVec2<unsigned int>(static_cast<unsigned int>(width), static_cast<unsigned int>(height)),
        camera, false));
    CKVRenderCommandCache* cache = mContext->getRenderCommandCache();
    if (!cache || !cache->submitAndWait(command.get(), kCaptureTimeoutMs)) {
        error = "the capture did not finish";
        return false;
    }
    struct stat info;
    if (::stat(path.c_str(), &info) != 0 || info.st_size == 0) {
        error = path + ": the image could not be written";
        return false;
    }
    return true;
}

std::vector<kv_shared_ptr<CKVRCPickSelectObject>> ViewSession::takeAnsweredPicks()
{
    std::vector<kv_shared_ptr<CKVRCPickSelectObject>> answered;
    std::vector<kv_shared_ptr<CKVRCPickSelectObject>> waiting;
    for (kv_shared_ptr<CKVRCPickSelectObject>& command : mPendingPicks)
        (command->isSignalled() ? answered : waiting).push_back(command);
    mPendingPicks.swap(waiting);
    return answered;
}

} // namespace Kelvor
