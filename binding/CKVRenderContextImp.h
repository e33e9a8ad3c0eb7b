#pragma once

#include "binding/CKVAtmosphereSetup.h"
#include "binding/CKVRenderConfigApplier.h"
#include "binding/CKVUniformBlock.h"
#include "viewer/CKVTickTarget.h"

#include "TarnwickCommon/kv_shared_ptr.h"
#include "TarnwickRender/CKVBackGroundConfig.h"
#include "TarnwickRender/CKVGraphicsModel.h"
#include "TarnwickRender/CKVRenderCommandCache.h"
#include "TarnwickRender/CKVRenderCommandDispatchMgr.h"
#include "TarnwickRender/CKVRenderConfig.h"
#include "TarnwickRender/CKVRenderContext.h"

#include <osg/GraphicsContext>
#include <osg/Uniform>
#include <osg/Vec3f>
#include <osg/ref_ptr>

#include <mutex>
#include <vector>

namespace Kelvor {

class CKVAxisHandle;
class CKVGISCamera;
class CKVOSGCamera;
class CKVPostProcessNode;
class CKVScenePicker;
class CKVScene;
class CKVViewer;

// The backend's render context: one viewer, one window, the root of the
// scene and the frame effects, driven by the window's 20 ms tick. Host
// threads reach the scene only through commands, which the tick drains on
// the render thread before each frame.
//
// This class holds what every platform shares; the platform subclass makes
// the window, runs `initialize` and owns the timer.
class CKVRenderContextImp : public CKVRenderContext, public CKVTickTarget
{
    KV_DECLARE_RUNTIME_CLASS(CKVRenderContextImp)
public:
    CKVRenderContextImp();
    // Tears down what `destroy` would, for a context deleted without it.
    ~CKVRenderContextImp() override;

    // From the process-wide context counter, not from the host's argument.
    unsigned int getId() const { return mId; }

    // Nothing to set up without a platform window: true.
    bool initialize(CKVGraphicsContext* graphicsContext) override;
    bool destroy() override;
    bool setGraphicsModel(CKVGraphicsModel* model) override;
    CKVRenderCommandCache* getRenderCommandCache() override;
    void onTick(unsigned int milliseconds) override;
    bool renderFrame() override;
    bool applyCamera(CKVCamera const& camera) override;
    bool attachSceneData(CKVSceneNode* node) override;
    bool detachSceneData(CKVSceneNode* node) override;
    // The older capture through a draw callback, which no context installs.
    bool getCapture(char const* path, CKVVec2<unsigned int> const& size, CKVCamera const& camera,
                    bool thumbnail) override;
    bool setTerrainHeight(float height) override;
    bool setViewPort(int width, int height) override;
    bool getViewPort(int& width, int& height) override;
    bool waterMask(char const* imagePath, unsigned int width, unsigned int height) override;
    bool pickSelectObject(CKVPoint3D const& pixel, CKVSelectionResult& result) override;
    bool areaSelectObject(CKVPoint3D const& corner1, CKVPoint3D const& corner2, unsigned int maxCount,
                          std::vector<CKVSelectionResult>& results) override;
    bool lineSegmentIntersection(CKVPoint3D const& start, CKVPoint3D const& end,
                                 CKVSelectionResult& result) override;
    bool updateClipTest(CKVVec4<float> const* planes, unsigned int count) override;
    bool applyBackGround(CKVBackGroundConfig const& config) override;
    bool applyRenderConfig(CKVRenderConfig const& config) override;

    // The uniforms that the main camera's scene view sets itself each frame
    // (osgUtil::SceneView::ActiveUniforms). False without a main camera.
    bool setActiveUniforms(int mask);
    // Frame number and time, view matrix and its inverse.
    static constexpr int kMainSceneViewUniforms = 99;

    // Follows a new window or capture size through every camera and pass
    // that renders at the viewport's size; absent ones are skipped.
    void resizeViews(int width, int height);

    CKVViewer* getViewer() const { return mViewer.get(); }
    CKVOSGCamera* getMainCamera() const { return mMainCamera.get(); }
    CKVPostProcessNode* getRoot() const { return mRoot.get(); }
    CKVScene* getScene() const { return mScene; }
    CKVGraphicsModel* getGraphicsModel() const { return mGraphicsModel.get(); }
    // Null before `initialize` and after `destroy`.
    CKVGISCamera* getGISCamera() const { return mGISCamera.get(); }
    CKVAxisHandle* getAxisHandle() const { return mAxisHandle.get(); }
    bool isConfigured() const { return mConfigured; }
    CKVRenderConfig const& getRenderConfig() const { return mConfigApplier.getRenderConfig(); }
    CKVBackGroundConfig const& getBackGroundConfig() const
    {
        return mConfigApplier.getBackGrounds().getBackGroundConfig();
    }
    // The render configuration's and background's state: background objects,
    // water mask, count of define changes.
    CKVRenderConfigApplier const& getConfigApplier() const { return mConfigApplier; }
    CKVUniformBlock const& getLightInfo() const { return mLightInfo; }
    CKVAtmosphereSetup const& getAtmosphere() const { return mAtmosphere; }
    osg::Vec3f getCameraPosition() const { return osg::Vec3f(mCameraPosition[0], mCameraPosition[1], mCameraPosition[2]); }
    osg::Vec3f getPreviousCameraPosition() const
    {
        return osg::Vec3f(mPreviousCameraPosition[0], mPreviousCameraPosition[1], mPreviousCameraPosition[2]);
    }

protected:
    // Pieces of the platform's `initialize`, in the order in which it calls
    // them; the platform adds the window and the timer in between.
    void createMainCamera(osg::GraphicsContext* window, int width, int height, int stencil);
    void createViewer();
    void createRoot(int samples);
    void setUpRootState();
    void createUniformBlocks();
    void handBlocksToState();
    void loadEnvironmentTextures();
    void createClipAndWeatherUniforms();
    // The first of the effects: the atmosphere, under the root.
    void createAtmosphere();
    void createCachesAndScene(CKVScene* scene);
    void configureViewerState();
    // Before the first frame: the GIS camera joins the root, and new
    // backgrounds go in before it.
    void createGISCamera();
    // After the first frame: the arrows' slave camera on `window`. A handle
    // that cannot be built is left out.
    void createAxisHandle(osg::GraphicsContext* window);
    static void addMimeTypeMappings();
    CKVScenePicker scenePicker() const;

    // Drops the GL objects and closes the window while its context can still
    // be made current: left to static destruction, the packaged
    // OpenSceneGraph crashes at exit.
    void releaseGraphics();

    // The frame mutex, for platform operations that must not overlap a tick.
    std::mutex& frameMutex() { return mFrameMutex; }
    void clearScene() { mScene = nullptr; }
    void setConfigured(bool configured) { mConfigured = configured; }

private:
    // One tick with the context current: drain, the operator's tick, the frame.
    void tickFrame(unsigned int milliseconds);
    void drain(CKVRenderCommandCache& cache, bool forcedFrame);
    void applyDefine(char const* name, bool on);
    // Points the configuration at the objects made so far in `initialize`.
    void wireConfigApplier();
    osg::Uniform* rootUniform(char const* name) const;
    void writeDetachCommands(CKVRenderCommandCache& cache);
    void writeAttachCommands(CKVRenderCommandCache& cache);

    osg::ref_ptr<CKVPostProcessNode> mRoot;
    osg::ref_ptr<CKVViewer> mViewer;
    unsigned int mId;
    kv_shared_ptr<CKVGraphicsModel> mGraphicsModel;
    std::mutex mFrameMutex;
    CKVScene* mScene = nullptr;
    bool mEventTraversal = true;
    kv_shared_ptr<CKVRenderCommandCache> mOwnCache;
    kv_shared_ptr<CKVRenderCommandCache> mActiveCache;
    // Caches that stopped being active while they still held commands (the
    // detach commands of a replaced model); drained once at the next tick.
    std::vector<kv_shared_ptr<CKVRenderCommandCache>> mRetiredCaches;
    // Guards the three cache fields above: host threads switch caches while
    // the render thread drains, without waiting for a frame.
    mutable std::mutex mCacheMutex;
    CKVRenderCommandDispatchMgr mDispatchMgr;
    bool mConfigured = false;
    float mCameraPosition[3] = {0.0f, 0.0f, 0.0f};
    float mPreviousCameraPosition[3] = {0.0f, 0.0f, 0.0f};
    osg::ref_ptr<CKVOSGCamera> mMainCamera;
    CKVUniformBlock mCameraInfo;
    CKVUniformBlock mEntityInfo;
    CKVUniformBlock mLightInfo;
    osg::ref_ptr<osg::Uniform> mRainIntensityUniform;
    osg::ref_ptr<osg::Uniform> mClipPlaneCountUniform;
    osg::ref_ptr<osg::Uniform> mClipPlaneArrUniform;
    osg::ref_ptr<CKVGISCamera> mGISCamera;
    kv_shared_ptr<CKVAxisHandle> mAxisHandle;
    CKVAtmosphereSetup mAtmosphere;
    // Render configuration, backgrounds and water mask; declared last so
    // that its references go before the context's own.
    CKVRenderConfigApplier mConfigApplier;
};

} // namespace Kelvor
