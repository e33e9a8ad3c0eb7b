#include "binding/CKVRenderContextImp.h"

#include "binding/CKVCameraUniforms.h"
#include "effects/CKVPostProcessNode.h"
#include "effects/CKVSSAOGenerator.h"
#include "picking/CKVScenePicker.h"
#include "programs/CKVProgramManager.h"
#include "programs/CKVRenderStateManager.h"
#include "scene/CKVOSGBindlessTexture.h"
#include "scene/CKVOSGNodeAdapter.h"
#include "scene/KVBindlessHandleUniform.h"
#include "viewer/CKVAxisHandle.h"
#include "viewer/CKVGISCamera.h"
#include "viewer/CKVOSGCamera.h"
#include "viewer/CKVOSGState.h"
#include "viewer/CKVViewer.h"
#include "viewer/DepthFunc.h"
#include "viewer/DepthRange.h"
#include "viewer/KVNoThrow.h"
#include "viewer/UpdateAxisHandle.h"

#include "TarnwickCommon/Common.h"
#include "TarnwickGeometry/KVMatrixConvert.h"
#include "TarnwickRender/CKVCamera.h"
#include "TarnwickRender/CKVGraphicsModelField.h"
#include "TarnwickRender/CKVOperator.h"
#include "TarnwickRender/CKVRCAttachSceneData.h"
#include "TarnwickRender/CKVRCDetachSceneData.h"
#include "TarnwickRender/CKVRenderCallback.h"
#include "TarnwickRender/CKVScene.h"

#include <osg/BlendFunc>
#include <osg/Texture2D>
#include <osgDB/ReadFile>
#include <osgDB/Registry>
#include <osgUtil/SceneView>
#include <osgViewer/Renderer>

#include <algorithm>
#include <cfloat>

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS_DYNAMIC(CKVRenderContextImp, CKVRenderContext)

namespace {

// Each context takes the next value as its id; the host's argument to the
// create factory only guards against a duplicate.
unsigned int gNextContextId = 0;

// Culling of the main camera: the whole view frustum (sides, near and far
// planes) and features smaller than a few pixels.
constexpr unsigned int kMainCullingMode =
    osg::CullSettings::VIEW_FRUSTUM_CULLING | osg::CullSettings::SMALL_FEATURE_CULLING;
static_assert(kMainCullingMode == 15, "the main camera culls as the host engine's other platforms do");
// What the main camera clears to before a render configuration gives a
// background: the root's scene pass and captures start from it. A colour
// no model or background uses, so that a pixel nothing drew stands out.
osg::Vec4 const kDefaultClearColor(0.58f, 0.95f, 0.85f, 1.0f);
// The light until the host sets its own, the same on every platform of the
// engine: a white sun 47 degrees up in the south-east (x east, y north, z
// up), towards which DirLightDir_V3 points; its intensity of 9 is scaled
// by 0.4 in the surface shaders, so that a lit white face comes out near
// the top of the tone curve without clipping, and a white ambient term of
// 0.15 keeps faces turned away from the sun readable.
osg::Vec3f const kDefaultLightDirection(0.4f, -0.5f, 0.7f);
constexpr float kDefaultLightIntensity = 9.0f;
constexpr float kDefaultAmbientIntensity = 0.15f;
// Texture units reserved on the root: the repeating noise (used while
// textures are not bindless) and the snow normal map.
constexpr unsigned int kNoiseTextureUnit = 16;
constexpr unsigned int kSnowNormalTextureUnit = 19;
// Reserved for the image-based lighting maps. Named from the start so that
// physically based surfaces never leave their cube samplers on unit 0, where
// the 2D material maps are: two sampler types on one unit fail every draw.
constexpr unsigned int kIrradianceMapUnit = 6;
constexpr unsigned int kPrefilterMapUnit = 7;
// Shaders clip against at most six host planes.
constexpr unsigned int kMaxClipPlanes = 6;
static_assert(CKVRenderContextImp::kMainSceneViewUniforms ==
                  (osgUtil::SceneView::FRAME_NUMBER_UNIFORM | osgUtil::SceneView::FRAME_TIME_UNIFORM |
                   osgUtil::SceneView::VIEW_MATRIX_UNIFORM | osgUtil::SceneView::VIEW_MATRIX_INVERSE_UNIFORM),
              "the main scene view sets frame number and time, view matrix and its inverse");

// Floats of the LightInfo block.
constexpr unsigned int kLightIntensity = 0;
constexpr unsigned int kAmbientIntensity = 1;
constexpr unsigned int kLightDirection = 4;
constexpr unsigned int kLightColor = 8;
constexpr unsigned int kAmbientColor = 12;

constexpr unsigned int kCameraInfoFloats = 112;  // seven mat4
constexpr unsigned int kEntityInfoFloats = 32;   // model and last model matrix
constexpr unsigned int kLightInfoFloats = 16;

char const* const kScreenSize = "ScreenSize";
// Until a viewport says otherwise.
constexpr float kDefaultScreenWidth = 800.0f;
constexpr float kDefaultScreenHeight = 600.0f;
char const* const kClipPlaneCount = "ClipPlaneCount_I";
char const* const kClipPlaneArr = "ClipPlaneArr";
char const* const kRainIntensity = "RainIntensity";

osg::ref_ptr<osg::Image> readResourceImage(CKVAString const& directory, char const* name)
{
    CKVAString const path = directory + name;
    // Checked first so that a missing optional file stays silent.
    if (!Common::checkFile(path.c_str()))
        return nullptr;
    return osgDB::readRefImageFile(path.c_str(), osgDB::Registry::instance()->getOptions());
}

} // namespace

CKVRenderContextImp::CKVRenderContextImp()
    : mId(gNextContextId++)
{
}

CKVRenderContextImp::~CKVRenderContextImp()
{
    // Platform classes tear down in their own destructor; this catches a
    // context that never had one.
    if (mViewer.valid())
        CKVRenderContextImp::destroy();
}

bool CKVRenderContextImp::initialize(CKVGraphicsContext*)
{
    return true;
}

// --- initialize, in steps -------------------------------------------------

void CKVRenderContextImp::createMainCamera(osg::GraphicsContext* window, int width, int height, int stencil)
{
    mMainCamera = new CKVOSGCamera;
    mMainCamera->setName("MainCamera");
    mMainCamera->setGraphicsContext(window);
    mMainCamera->setViewport(0, 0, width, height);
    mMainCamera->setAllowEventFocus(false);
    double const aspect = height > 0 ? static_cast<double>(width) / height : 1.0;
    mMainCamera->setProjectionMatrixAsPerspective(60.0, aspect, 0.01, 1000.0);
    mMainCamera->setClearColor(kDefaultClearColor);
    mMainCamera->setViewMatrixAsLookAt(osg::Vec3d(0.0, 0.0, 1.0), osg::Vec3d(0.0, 0.0, 0.0), osg::Vec3d(0.0, 1.0, 0.0));
    mMainCamera->setComputeNearFarMode(osg::CullSettings::DO_NOT_COMPUTE_NEAR_FAR);
    mMainCamera->setCullingMode(kMainCullingMode);
    mMainCamera->setClearMask(0);
    mMainCamera->setColorMask(nullptr);
    if (stencil != 0) {
        mMainCamera->setClearMask(GL_STENCIL_BUFFER_BIT);
        mMainCamera->setClearStencil(0);
    }
}

void CKVRenderContextImp::createViewer()
{
    mViewer = new CKVViewer;
    mViewer->setCamera(mMainCamera.get());
    mViewer->setThreadingModel(osgViewer::ViewerBase::SingleThreaded);
    osg::ref_ptr<CKVOSGNodeAdapter> updateVisitor = new CKVOSGNodeAdapter;
    updateVisitor->setFrameStamp(mViewer->getFrameStamp());
    mViewer->setUpdateVisitor(updateVisitor.get());
}

void CKVRenderContextImp::createRoot(int samples)
{
    mCameraInfo = CKVUniformBlock(0, kCameraInfoFloats);
    mRoot = new CKVPostProcessNode(mMainCamera.get(), mCameraInfo.getArray(), samples);
    mRoot->setName("root");
}

void CKVRenderContextImp::setUpRootState()
{
    osg::StateSet* stateSet = mRoot->getOrCreateStateSet();
    stateSet->setMode(GL_DEPTH_TEST, osg::StateAttribute::ON);
    stateSet->setMode(GL_BLEND, osg::StateAttribute::OFF);
    stateSet->setAttribute(
        new osg::BlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA, GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA));
    stateSet->setMode(GL_DEPTH_CLAMP, osg::StateAttribute::ON);
    stateSet->setAttribute(new DepthFunc(GL_LEQUAL));
    stateSet->setAttribute(new DepthRange(0.0, 1.0));
}

void CKVRenderContextImp::createUniformBlocks()
{
    osg::StateSet* stateSet = mRoot->getOrCreateStateSet();
    if (!CKVRenderStateManager::instance().isBindlessTexture())
        stateSet->setDefine("_USE_NOT_BINDLESS_TEXTURE");
    stateSet->setAttribute(mCameraInfo.getBinding());

    mEntityInfo = CKVUniformBlock(1, kEntityInfoFloats);
    osg::Matrixf const identity;
    mEntityInfo.set(0, identity.ptr(), 16);
    mEntityInfo.set(16, identity.ptr(), 16);
    stateSet->setAttribute(mEntityInfo.getBinding());
    handBlocksToState();

    mLightInfo = CKVUniformBlock(2, kLightInfoFloats);
    stateSet->addUniform(new osg::Uniform(CKVCameraUniforms::kCameraPosition, osg::Vec3f(0.0f, 0.0f, 0.0f)));
    osg::Viewport const* viewport = mMainCamera->getViewport();
    stateSet->addUniform(new osg::Uniform(
        kScreenSize, osg::Vec2f(viewport ? static_cast<float>(viewport->width()) : kDefaultScreenWidth,
                                viewport ? static_cast<float>(viewport->height()) : kDefaultScreenHeight)));
    stateSet->addUniform(
        new osg::Uniform(CKVCameraUniforms::kFixedProjection, osg::Matrixf(mMainCamera->getProjectionMatrix())));
    stateSet->addUniform(new osg::Uniform(CKVCameraUniforms::kScaleOnlyView, osg::Matrixf()));

    osg::Vec3f lightDirection = kDefaultLightDirection;
    lightDirection.normalize();
    mLightInfo.set(kLightDirection, lightDirection.ptr(), 3);
    mRoot->setLightPosition(lightDirection);
    float const white[3] = {1.0f, 1.0f, 1.0f};
    mLightInfo.set(kLightIntensity, kDefaultLightIntensity);
    mLightInfo.set(kAmbientIntensity, kDefaultAmbientIntensity);
    mLightInfo.set(kLightColor, white, 3);
    mLightInfo.set(kAmbientColor, white, 3);
    stateSet->setAttribute(mLightInfo.getBinding());
}

void CKVRenderContextImp::handBlocksToState()
{
    osg::GraphicsContext* window = mMainCamera->getGraphicsContext();
    osg::State* state = window ? window->getState() : nullptr;
    // A window on the stock state draws, but its shaders see no matrices.
    CKVOSGState* kvState = state ? CKVOSGState::asKVState(*state) : nullptr;
    if (!kvState)
        return;
    kvState->setCameraArray(mCameraInfo.getArray());
    kvState->setEntityArray(mEntityInfo.getArray());
}

void CKVRenderContextImp::loadEnvironmentTextures()
{
    osg::StateSet* stateSet = mRoot->getOrCreateStateSet();
    stateSet->addUniform(new osg::Uniform("IrradianceMap", static_cast<int>(kIrradianceMapUnit)));
    stateSet->addUniform(new osg::Uniform("PrefilterMap", static_cast<int>(kPrefilterMapUnit)));
    CKVAString directory;
    Common::getResourceDirectory(directory);

    osg::ref_ptr<osg::Texture2D> noise = new osg::Texture2D;
    noise->setFilter(osg::Texture::MIN_FILTER, osg::Texture::LINEAR_MIPMAP_LINEAR);
    noise->setFilter(osg::Texture::MAG_FILTER, osg::Texture::LINEAR);
    noise->setWrap(osg::Texture::WRAP_S, osg::Texture::REPEAT);
    noise->setWrap(osg::Texture::WRAP_T, osg::Texture::REPEAT);
    if (osg::ref_ptr<osg::Image> image = readResourceImage(directory, "/repnoise.jpg"))
        noise->setImage(image.get());
    if (CKVRenderStateManager::instance().isBindlessTexture()) {
        osg::ref_ptr<KVBindlessHandleUniform> handle = new KVBindlessHandleUniform("s_repNoise", 0, true);
        stateSet->addUniform(handle.get());
        getOrCreateBindlessTexture(stateSet)->addTexture({noise, handle});
    } else {
        stateSet->setTextureAttribute(kNoiseTextureUnit, noise.get());
        stateSet->addUniform(new osg::Uniform("s_repNoise", static_cast<int>(kNoiseTextureUnit)));
    }

    osg::ref_ptr<osg::Image> snowNormal = readResourceImage(directory, "/particle/snow_normal.tif");
    if (!snowNormal.valid())
        return;
    osg::ref_ptr<osg::Texture2D> snow = new osg::Texture2D(snowNormal.get());
    snow->setWrap(osg::Texture::WRAP_S, osg::Texture::REPEAT);
    snow->setWrap(osg::Texture::WRAP_T, osg::Texture::REPEAT);
    snow->setFilter(osg::Texture::MIN_FILTER, osg::Texture::LINEAR);
    snow->setFilter(osg::Texture::MAG_FILTER, osg::Texture::LINEAR);
    stateSet->setTextureAttribute(kSnowNormalTextureUnit, snow.get());
    stateSet->addUniform(new osg::Uniform("Snow_Normal_Tx", static_cast<int>(kSnowNormalTextureUnit)));
}

void CKVRenderContextImp::createClipAndWeatherUniforms()
{
    osg::StateSet* stateSet = mRoot->getOrCreateStateSet();
    mClipPlaneCountUniform = new osg::Uniform(kClipPlaneCount, 0);
    mClipPlaneArrUniform = new osg::Uniform(osg::Uniform::FLOAT_VEC4, kClipPlaneArr, kMaxClipPlanes);
    for (unsigned int i = 0; i < kMaxClipPlanes; ++i)
        mClipPlaneArrUniform->setElement(i, osg::Vec4f());
    mRainIntensityUniform = new osg::Uniform(kRainIntensity, 0.0f);
    stateSet->addUniform(mClipPlaneCountUniform.get());
    stateSet->addUniform(mClipPlaneArrUniform.get());
    stateSet->addUniform(mRainIntensityUniform.get());
}

void CKVRenderContextImp::createAtmosphere()
{
    mAtmosphere.create(mRoot.get(), mLightInfo.getBinding(), mMainCamera.get(), mConfigApplier);
}

void CKVRenderContextImp::createCachesAndScene(CKVScene* scene)
{
    {
        std::lock_guard<std::mutex> lock(mCacheMutex);
        mOwnCache = new CKVRenderCommandCache;
        mActiveCache = mOwnCache;
    }
    mViewer->setSceneData(mRoot.get());
    mScene = scene;
}

void CKVRenderContextImp::configureViewerState()
{
    mViewer->setKeyEventSetsDone(0);
    osgViewer::ViewerBase::Windows windows;
    mViewer->getWindows(windows);
    for (osgViewer::GraphicsWindow* window : windows) {
        osg::State* state = window->getState();
        if (!state)
            continue;
        state->setUseModelViewAndProjectionUniforms(false);
        state->setUseVertexAttributeAliasing(true);
    }
    mEventTraversal = false;
    // A glGetError after every state change stalls software GL badly.
    for (osgViewer::GraphicsWindow* window : windows) {
        if (osg::State* state = window->getState())
            state->setCheckForGLErrors(osg::State::NEVER_CHECK_GL_ERRORS);
    }
}

void CKVRenderContextImp::createGISCamera()
{
    mGISCamera = new CKVGISCamera(mMainCamera.get());
    mRoot->setGISCamera(mGISCamera.get());
    mRoot->addChild(mGISCamera.get());
    mConfigApplier.getBackGrounds().setInsertBefore(mGISCamera.get());
}

void CKVRenderContextImp::createAxisHandle(osg::GraphicsContext* window)
{
    kv_shared_ptr<CKVAxisHandle> handle(new CKVAxisHandle);
    if (!handle->initialize(window))
        return;
    mViewer->addSlave(handle->getCamera(), false);
    osg::View::Slave* slave = mViewer->findSlaveForCamera(handle->getCamera());
    if (slave)
        slave->_updateSlaveCallback = new UpdateAxisHandle;
    mAxisHandle = handle;
}

void CKVRenderContextImp::addMimeTypeMappings()
{
    osgDB::Registry* registry = osgDB::Registry::instance();
    registry->addMimeTypeExtensionMapping("image/jpeg; charset=utf8", "jpeg");
    registry->addMimeTypeExtensionMapping("image/jpg; charset=utf8", "jpg");
    registry->addMimeTypeExtensionMapping("image/png; charset=utf8", "png");
}

// --- teardown ---------------------------------------------------------------

bool CKVRenderContextImp::destroy()
{
    std::lock_guard<std::mutex> lock(mFrameMutex);
    if (!mViewer.valid())
        return false;
    mViewer->setDone(true);
    releaseGraphics();
    mViewer = nullptr;
    mMainCamera = nullptr;
    mAxisHandle = nullptr;
    mGISCamera = nullptr;
    return true;
}

void CKVRenderContextImp::releaseGraphics()
{
    if (!mViewer.valid())
        return;
    osgViewer::ViewerBase::Contexts contexts;
    mViewer->getContexts(contexts, false);
    // Closing a context releases the GL objects of every camera drawn into
    // it, the scene below included, while it can still be made current.
    for (osg::GraphicsContext* context : contexts) {
        mConfigApplier.getBackGrounds().releaseGLObjects(context->getState());
        context->close();
    }
    mViewer->setSceneData(nullptr);
    if (mMainCamera.valid())
        mMainCamera->setGraphicsContext(nullptr);
    // Neither may keep the closed window alive until the context goes.
    if (mGISCamera.valid())
        mGISCamera->setGraphicsContext(nullptr);
    if (mAxisHandle.valid())
        mAxisHandle->releaseGraphicsContext();
}

// --- the frame ----------------------------------------------------------------

void CKVRenderContextImp::onTick(unsigned int milliseconds)
{
    std::lock_guard<std::mutex> lock(mFrameMutex);
    if (!mViewer.valid())
        return;
    osg::GraphicsContext* context = nullptr;
    // A frame that throws is dropped; the next tick draws again.
    KVNoThrow::call("render tick: frame dropped", [&] {
        osgViewer::ViewerBase::Contexts contexts;
        mViewer->getContexts(contexts, true);
        mViewer->checkWindowStatus(contexts);
        if (mViewer->done() || contexts.empty())
            return false;
        context = contexts.front();
        context->makeCurrent();
        tickFrame(milliseconds);
        return true;
    });
    // The frame releases the context itself; a command may have stopped the
    // frame, or it threw, and the next tick may come on another thread.
    if (context)
        context->releaseContext();
}

void CKVRenderContextImp::tickFrame(unsigned int milliseconds)
{
    std::vector<kv_shared_ptr<CKVRenderCommandCache>> retired;
    kv_shared_ptr<CKVRenderCommandCache> active;
    {
        std::lock_guard<std::mutex> cacheLock(mCacheMutex);
        retired.swap(mRetiredCaches);
        active = mActiveCache;
    }
    bool const forcedFrame = mScene && !mScene->getAutoUpdateFrame();
    for (kv_shared_ptr<CKVRenderCommandCache> const& cache : retired)
        drain(*cache, forcedFrame);
    if (active.valid())
        drain(*active, forcedFrame);

    if (mScene) {
        kv_shared_ptr<CKVOperator> op;
        if (mScene->getSafeOperator(op))
            op->tick(milliseconds);
    }
    renderFrame();
}

void CKVRenderContextImp::drain(CKVRenderCommandCache& cache, bool forcedFrame)
{
    CKVRenderCommandCache::CommandList commands;
    cache.read(commands, forcedFrame);
    for (kv_shared_ptr<CKVRenderCommand> const& command : commands) {
        // A failed command wakes its writer too; its record then holds no
        // result. One that throws has failed, and the drain goes on.
        KVNoThrow::call("render command failed", [&] { return mDispatchMgr.dispatch(this, *command); });
        command->signal();
    }
}

bool CKVRenderContextImp::renderFrame()
{
    if (!mViewer.valid() || mViewer->done())
        return false;
    std::copy(mCameraPosition, mCameraPosition + 3, mPreviousCameraPosition);
    mViewer->advance(DBL_MAX);
    if (mEventTraversal)
        mViewer->eventTraversal();
    mViewer->updateTraversal();
    mViewer->renderingTraversals();
    return true;
}

// --- graphics model and commands ----------------------------------------------

bool CKVRenderContextImp::setGraphicsModel(CKVGraphicsModel* model)
{
    if (model == mGraphicsModel.get())
        return true;
    if (model && !CKVRenderCallback::verifyGraphicsModel(model))
        return false;
    if (!mRoot.valid())
        return false;

    std::lock_guard<std::mutex> lock(mCacheMutex);
    if (mGraphicsModel.valid() && mActiveCache.valid()) {
        writeDetachCommands(*mActiveCache);
        // The old cache stops being drained once another is active, so its
        // detach commands would never run: it gets one last drain.
        if (mActiveCache != mOwnCache)
            mRetiredCaches.push_back(mActiveCache);
    }
    mGraphicsModel = model;
    mActiveCache = mOwnCache;
    if (!model)
        return true;

    mActiveCache = model->getRenderCommandCache();
    if (mActiveCache.valid())
        writeAttachCommands(*mActiveCache);
    return true;
}

void CKVRenderContextImp::writeDetachCommands(CKVRenderCommandCache& cache)
{
    for (unsigned int i = 0; i < CKVGraphicsModel::kFieldCount; ++i) {
        if (CKVGraphicsModelField* field = mGraphicsModel->getField(i))
            cache.write(new CKVRCDetachSceneData(field->getNodeObject()));
    }
    cache.finish();
}

void CKVRenderContextImp::writeAttachCommands(CKVRenderCommandCache& cache)
{
    for (unsigned int i = 0; i < CKVGraphicsModel::kFieldCount; ++i) {
        if (CKVGraphicsModelField* field = mGraphicsModel->getField(i))
            cache.write(new CKVRCAttachSceneData(field->getNodeObject()));
    }
    cache.finish();
}

CKVRenderCommandCache* CKVRenderContextImp::getRenderCommandCache()
{
    std::lock_guard<std::mutex> lock(mCacheMutex);
    return mActiveCache.get();
}

bool CKVRenderContextImp::attachSceneData(CKVSceneNode* node)
{
    return mRoot.valid() && mRoot->addSceneNode(node);
}

bool CKVRenderContextImp::detachSceneData(CKVSceneNode* node)
{
    return mRoot.valid() && mRoot->removeSceneNode(node);
}

// --- camera and viewport ------------------------------------------------------

bool CKVRenderContextImp::applyCamera(CKVCamera const& camera)
{
    if (!mMainCamera.valid())
        return false;
    osg::Matrixd const view = toOsgMatrix(camera.getViewMatrix());
    osg::Matrixd const projection = toOsgMatrix(camera.getProjectMatrix());
    mMainCamera->setViewMatrix(view);
    mMainCamera->setProjectionMatrix(projection);

    osg::Vec3f const position = CKVCameraUniforms::position(camera);
    std::copy(position.ptr(), position.ptr() + 3, mCameraPosition);
    if (osg::Uniform* uniform = rootUniform(CKVCameraUniforms::kCameraPosition))
        uniform->set(position);

    osg::Matrixf fixedProjection;
    if (camera.getProjectMode() == CKVCamera::kPerspective &&
        CKVCameraUniforms::fixedProjection(projection, fixedProjection)) {
        if (osg::Uniform* uniform = rootUniform(CKVCameraUniforms::kFixedProjection))
            uniform->set(fixedProjection);
    }
    if (osg::Uniform* uniform = rootUniform(CKVCameraUniforms::kScaleOnlyView))
        uniform->set(CKVCameraUniforms::scaleOnlyView(view));
    if (mAxisHandle.valid())
        mAxisHandle->update(camera);
    return true;
}

bool CKVRenderContextImp::setViewPort(int width, int height)
{
    if (!mMainCamera.valid())
        return false;
    resizeViews(width, height);
    if (mAxisHandle.valid())
        mAxisHandle->resize(width, height);
    return true;
}

void CKVRenderContextImp::resizeViews(int width, int height)
{
    int const viewportAndAttachments = osg::Camera::RESIZE_VIEWPORT | osg::Camera::RESIZE_ATTACHMENTS;
    if (mMainCamera.valid())
        mMainCamera->resize(width, height, viewportAndAttachments);
    if (mGISCamera.valid())
        mGISCamera->resize(width, height, viewportAndAttachments);
    mConfigApplier.getBackGrounds().resize(width, height);
    if (mRoot.valid())
        mRoot->resize(width, height);
    if (CKVSSAOGenerator* ssao = mRoot.valid() ? mRoot->getSSAOGenerator() : nullptr)
        ssao->resize(static_cast<unsigned int>(std::max(width, 0)), static_cast<unsigned int>(std::max(height, 0)));
    // The shaders that read screen-sized targets at gl_FragCoord divide by
    // it: a capture of another size must see its own.
    if (osg::Uniform* uniform = rootUniform(kScreenSize))
        uniform->set(osg::Vec2f(static_cast<float>(width), static_cast<float>(height)));
    // Then the water and occlusion passes, once they exist.
}

bool CKVRenderContextImp::getViewPort(int& width, int& height)
{
    if (!mMainCamera.valid() || !mMainCamera->getViewport())
        return false;
    width = static_cast<int>(mMainCamera->getViewport()->width());
    height = static_cast<int>(mMainCamera->getViewport()->height());
    return true;
}

bool CKVRenderContextImp::setActiveUniforms(int mask)
{
    if (!mMainCamera.valid())
        return false;
    auto* renderer = dynamic_cast<osgViewer::Renderer*>(mMainCamera->getRenderer());
    osgUtil::SceneView* sceneView = renderer ? renderer->getSceneView(0) : nullptr;
    if (!sceneView)
        return false;
    sceneView->setActiveUniforms(mask);
    return true;
}

// --- capture, picking, environment --------------------------------------------

bool CKVRenderContextImp::getCapture(char const*, CKVVec2<unsigned int> const&, CKVCamera const&, bool)
{
    // The draw-callback capture needs an installed callback, and no context
    // installs one: the platform class renders its own capture frame.
    return false;
}

CKVScenePicker CKVRenderContextImp::scenePicker() const
{
    // Without a viewer there is no scene to ask, whatever the camera holds.
    return CKVScenePicker(mViewer.valid() ? mMainCamera.get() : nullptr);
}

bool CKVRenderContextImp::pickSelectObject(CKVPoint3D const& pixel, CKVSelectionResult& result)
{
    return scenePicker().pick(pixel, result);
}

bool CKVRenderContextImp::areaSelectObject(CKVPoint3D const& corner1, CKVPoint3D const& corner2, unsigned int maxCount,
                                           std::vector<CKVSelectionResult>& results)
{
    return scenePicker().select(corner1, corner2, maxCount, results);
}

bool CKVRenderContextImp::lineSegmentIntersection(CKVPoint3D const& start, CKVPoint3D const& end,
                                                  CKVSelectionResult& result)
{
    return scenePicker().intersect(start, end, result);
}

bool CKVRenderContextImp::setTerrainHeight(float height)
{
    mAtmosphere.setTerrainHeight(height);
    return true;
}

bool CKVRenderContextImp::waterMask(char const* imagePath, unsigned int width, unsigned int height)
{
    if (!mRoot.valid())
        return false;
    wireConfigApplier();
    return mConfigApplier.getBackGrounds().waterMask(imagePath, width, height, mViewer.get());
}

bool CKVRenderContextImp::updateClipTest(CKVVec4<float> const* planes, unsigned int count)
{
    if (!mRoot.valid() || !mClipPlaneCountUniform.valid() || !mClipPlaneArrUniform.valid())
        return false;
    unsigned int const used = std::min(count, kMaxClipPlanes);
    if (used > 0 && !planes)
        return false;

    int previous = 0;
    mClipPlaneCountUniform->get(previous);
    if (previous != 0 && count == 0)
        applyDefine("_USE_CLIP_TEST", false);
    else if (previous == 0 && count != 0)
        applyDefine("_USE_CLIP_TEST", true);

    osg::StateSet* stateSet = mRoot->getOrCreateStateSet();
    for (unsigned int i = 0; i < kMaxClipPlanes; ++i)
        stateSet->setMode(GL_CLIP_DISTANCE0 + i, osg::StateAttribute::OFF);
    // A count above the limit, or a negative one passed through the unsigned
    // argument, uses every plane there is.
    int const signedCount = static_cast<int>(count);
    int const stored = signedCount > 5 || signedCount < 0 ? static_cast<int>(kMaxClipPlanes) : signedCount;
    mClipPlaneCountUniform->set(stored);
    for (unsigned int i = 0; i < used; ++i) {
        mClipPlaneArrUniform->setElement(i, osg::Vec4f(planes[i].x, planes[i].y, planes[i].z, planes[i].w));
        stateSet->setMode(GL_CLIP_DISTANCE0 + i, osg::StateAttribute::ON);
    }
    return true;
}

// --- render configuration -------------------------------------------------------

void CKVRenderContextImp::wireConfigApplier()
{
    mConfigApplier.setTargets(mRoot.get(), mMainCamera.get(), mLightInfo, mRainIntensityUniform.get());
}

bool CKVRenderContextImp::applyRenderConfig(CKVRenderConfig const& config)
{
    wireConfigApplier();
    return mConfigApplier.applyRenderConfig(config, mConfigured);
}

bool CKVRenderContextImp::applyBackGround(CKVBackGroundConfig const& config)
{
    wireConfigApplier();
    return mConfigApplier.applyBackGround(config);
}

void CKVRenderContextImp::applyDefine(char const* name, bool on)
{
    wireConfigApplier();
    mConfigApplier.applyDefine(name, on);
}

osg::Uniform* CKVRenderContextImp::rootUniform(char const* name) const
{
    osg::StateSet* stateSet = mRoot.valid() ? mRoot->getStateSet() : nullptr;
    return stateSet ? stateSet->getUniform(name) : nullptr;
}

} // namespace Kelvor
