#include "binding/CKVRenderContextX11Imp.h"

#include "binding/CKVRenderContextCaptureListener.h"
#include "effects/CKVHiZGenerator.h"
#include "effects/CKVPostProcessNode.h"
#include "effects/CKVSSAOGenerator.h"
#include "effects/CKVShadowGenerator.h"
#include "programs/CKVRenderStateManager.h"
#include "viewer/CKVFrameCapture.h"
#include "viewer/CKVGraphicsWindowX11.h"
#include "viewer/CKVOSGCamera.h"
#include "viewer/CKVViewer.h"

#include "TarnwickGeometry/KVMatrixConvert.h"
#include "TarnwickRender/CKVCamera.h"
#include "TarnwickRender/CKVGraphicsContext.h"
#include "TarnwickRender/CKVScene.h"
#include "TarnwickRender/CKVWindowDataX11.h"

#include <osg/DisplaySettings>

#include <GL/glx.h>
#include <X11/Xlib.h>

#include <cfloat>
#include <cstring>

namespace Kelvor {

KV_IMPLEMENT_RUNTIME_CLASS_DYNAMIC(CKVRenderContextX11Imp, CKVRenderContextImp)

namespace {

char const* glString(GLenum name)
{
    auto const* text = reinterpret_cast<char const*>(glGetString(name));
    return text ? text : "";
}

} // namespace

CKVRenderContextX11Imp::CKVRenderContextX11Imp() = default;

CKVRenderContextX11Imp::~CKVRenderContextX11Imp()
{
    // A context deleted while it runs (at process exit, say) must stop its
    // timer before anything the tick uses goes away.
    if (getViewer())
        destroy();
}

CKVGraphicsWindowX11* CKVRenderContextX11Imp::getWindow() const
{
    osg::GraphicsContext* context = getMainCamera() ? getMainCamera()->getGraphicsContext() : nullptr;
    if (!context || std::strcmp(context->className(), "CKVGraphicsWindowX11") != 0)
        return nullptr;
    return static_cast<CKVGraphicsWindowX11*>(context);
}

bool CKVRenderContextX11Imp::initialize(CKVGraphicsContext* graphicsContext)
{
    CKVWindowData const* data = graphicsContext ? graphicsContext->getWindowData() : nullptr;
    if (!data || !data->isKindOf(CKVWindowDataX11::desc()))
        return false;
    auto const& windowData = static_cast<CKVWindowDataX11 const&>(*data);
    // Window 0 would make OpenSceneGraph open a window of its own.
    if (windowData.getWindow() == 0 || getViewer())
        return false;

    // The host's display names the X server; our window opens its own
    // connection to the same server.
    osg::ref_ptr<osg::GraphicsContext::Traits> traits = CKVGraphicsWindowX11::createTraits(
        static_cast<Display*>(windowData.getDisplay()), static_cast<Window>(windowData.getWindow()),
        windowData.getDoubleBuffer(), windowData.getSamples(), windowData.getStencil());
    traits->width = windowData.getWidth();
    traits->height = windowData.getHeight();
    traits->sharedContext = nullptr;

    osg::DisplaySettings::instance()->setShaderHint(osg::DisplaySettings::SHADER_GL3, true);

    // Straight to our own window class: the stock factory would only build
    // a GraphicsWindowX11 on the same window for us to throw away.
    osg::ref_ptr<CKVGraphicsWindowX11> window = new CKVGraphicsWindowX11(traits.get());
    if (!window->valid()) {
        window->close();
        return false;
    }

    createMainCamera(window.get(), windowData.getWidth(), windowData.getHeight(), windowData.getStencil());
    createViewer();
    createRoot(windowData.getSamples());
    setUpRootState();
    queryDriver(*window);
    createUniformBlocks();
    loadEnvironmentTextures();
    createClipAndWeatherUniforms();
    CKVScene* scene = graphicsContext->getScene();
    // The effects (atmosphere, HiZ, shadows, SSAO, LPV, water) join the root here as they land.
    createAtmosphere();
    // So does the weather geode with the rain and snow particle systems.
    getRoot()->setShadowGenerator(new CKVShadowGenerator(scene, getMainCamera(), getRoot()));
    getRoot()->setSSAOGenerator(new CKVSSAOGenerator(getMainCamera(), getRoot()));
    getRoot()->setHiZGenerator(new CKVHiZGenerator(getMainCamera(), getRoot()));
    createCachesAndScene(scene);
    window->setTickTarget(this);
    configureViewerState();
    applyRenderConfig(scene ? scene->getRenderConfig() : CKVRenderConfig());
    setActiveUniforms(kMainSceneViewUniforms);
    createGISCamera();
    getViewer()->frame(DBL_MAX);
    createAxisHandle(window.get());
    window->startTimer();
    addMimeTypeMappings();
    setConfigured(true);
    return true;
}

void CKVRenderContextX11Imp::queryDriver(CKVGraphicsWindowX11& window)
{
    // The window is not realised before the first frame, so the viewer
    // cannot make it current yet; GLX can.
    Display* display = window.getDisplay();
    if (!display || !glXMakeCurrent(display, window.getWindow(), window.getContext()))
        return;
    mGLVendor = glString(GL_VENDOR);
    mGLRenderer = glString(GL_RENDERER);
    mGLVersion = glString(GL_VERSION);
    mGLSLVersion = glString(GL_SHADING_LANGUAGE_VERSION);
    CKVRenderStateManager::instance().initExtensions();
    glXMakeCurrent(display, None, nullptr);
}

bool CKVRenderContextX11Imp::destroy()
{
    if (CKVGraphicsWindowX11* window = getWindow()) {
        window->stopTimer();
        window->setTickTarget(nullptr);
    }
    clearScene();
    return CKVRenderContextImp::destroy();
}

bool CKVRenderContextX11Imp::getCapture(char const* path, CKVVec2<unsigned int> const& size,
                                        CKVCamera const& camera, bool thumbnail)
{
    int viewWidth = 0;
    int viewHeight = 0;
    if (!path || !getViewer() || !getViewPort(viewWidth, viewHeight))
        return false;
    unsigned int const width = CKVFrameCapture::evenSize(size.x);
    unsigned int const height = CKVFrameCapture::evenSize(size.y);
    if (width == 0 || height == 0)
        return false;

    CKVRenderContextCaptureListener listener(*this, camera, viewWidth, viewHeight);
    CKVFrameCapture capture(getViewer(), getMainCamera());
    capture.setListener(&listener);
    bool const written = capture.capture(path, width, height, toOsgMatrix(camera.getViewMatrix()),
                                         toOsgMatrix(camera.getProjectMatrix()), thumbnail);
    return written;
}

} // namespace Kelvor
