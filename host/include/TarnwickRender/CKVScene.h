#pragma once

#include "TarnwickCommon/CKVObject.h"
#include "TarnwickCommon/kv_shared_ptr.h"
#include "TarnwickRender/CKVCamera.h"
#include "TarnwickRender/CKVGraphicsModel.h"
#include "TarnwickRender/CKVOperator.h"
#include "TarnwickRender/CKVRenderConfig.h"

#include <atomic>
#include <mutex>

namespace Kelvor {

class CKVEvent;
class CKVRay3D;

// What the host shows in one window: camera, render configuration, the
// active operator and the graphics model. Host threads and the render thread
// both use it, so every setter and the `getSafe...` getters lock. The
// reference getters (`getCamera`, `getRenderConfig`) do not: they suit a
// thread that is the only writer, or a moment when no writer runs.
class CKVScene : public CKVObject
{
    KV_DECLARE_RUNTIME_CLASS(CKVScene)
public:
    CKVScene();
    ~CKVScene() override;

    CKVScene(CKVScene const&) = delete;
    CKVScene& operator=(CKVScene const&) = delete;

    CKVCamera const& getCamera() const { return mCamera; }
    void getSafeCamera(CKVCamera& out) const;
    void setCamera(CKVCamera const& camera);

    CKVRenderConfig const& getRenderConfig() const { return mRenderConfig; }
    void setRenderConfig(CKVRenderConfig const& config);

    // False when the scene redraws only on request; the render context then
    // reads the command cache in its "forced" form.
    bool getAutoUpdateFrame() const { return mAutoUpdateFrame.load(std::memory_order_acquire); }
    void setAutoUpdateFrame(bool autoUpdate) { mAutoUpdateFrame.store(autoUpdate, std::memory_order_release); }

    // Each gives the current object (or null) with a reference of its own, so
    // the caller may use it while another thread replaces it. True when non-null.
    bool getSafeOperator(kv_shared_ptr<CKVOperator>& out) const;
    void setOperator(CKVOperator* op);
    bool getSafeGraphicsModel(kv_shared_ptr<CKVGraphicsModel>& out) const;
    void setGraphicsModel(CKVGraphicsModel* model);

    // The viewport in pixels that `getSelectRay` measures positions in.
    void setViewportSize(int width, int height);
    void getViewportSize(int& width, int& height) const;

    // The pick ray through a pixel: x to the right, y counted from the top of
    // the viewport, (0, 0) the top-left corner and (width, height) the
    // bottom-right one; z is ignored. The ray starts on the near plane and
    // has a unit direction; it is exactly the camera's view and projection
    // matrices run backwards, in both projection modes. False without a
    // viewport or with a camera whose matrices cannot be inverted.
    bool getSelectRay(CKVPoint3D const& pixel, CKVRay3D& out) const;

    // Tells the scene that the camera moved outside a synchronous command.
    virtual void cameraPosChanged();
    unsigned int getCameraChangeCount() const { return mCameraChanges.load(std::memory_order_acquire); }

    // Input entry points: each hands the event to the current operator. The
    // operator is called without the scene's lock held, so it may call back
    // into the scene.
    virtual void onLButtonDown(CKVEvent const& event);
    virtual void onLButtonUp(CKVEvent const& event);
    virtual void onLButtonDblClk(CKVEvent const& event);
    virtual void onMButtonDown(CKVEvent const& event);
    virtual void onMButtonUp(CKVEvent const& event);
    virtual void onMButtonDblClk(CKVEvent const& event);
    virtual void onRButtonDown(CKVEvent const& event);
    virtual void onRButtonUp(CKVEvent const& event);
    virtual void onRButtonDblClk(CKVEvent const& event);
    virtual void onMouseMove(CKVEvent const& event);
    virtual void onMouseWheel(CKVEvent const& event);
    virtual void onKeyDown(CKVEvent const& event);
    virtual void onKeyUp(CKVEvent const& event);

private:
    template <class Handler>
    void forward(Handler handler, CKVEvent const& event);

    mutable std::mutex mMutex;
    CKVCamera mCamera;
    CKVRenderConfig mRenderConfig;
    kv_shared_ptr<CKVOperator> mOperator;
    kv_shared_ptr<CKVGraphicsModel> mGraphicsModel;
    int mViewportWidth = 0;
    int mViewportHeight = 0;
    std::atomic<bool> mAutoUpdateFrame{true};
    std::atomic<unsigned int> mCameraChanges{0};
};

} // namespace Kelvor
