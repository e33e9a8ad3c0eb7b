#include "viewer/CKVGraphicsWindowEGL.h"

#include "viewer/CKVGLQuirks.h"
#include "viewer/CKVOSGState.h"

#include <EGL/egl.h>
#include <EGL/eglext.h>

#include <string>
#include <vector>

namespace Kelvor {

namespace {

// Mesa's display without a window system; the default display (which may
// be an X server) only when that platform is missing.
EGLDisplay openDisplay()
{
    auto getPlatformDisplay =
        reinterpret_cast<PFNEGLGETPLATFORMDISPLAYEXTPROC>(eglGetProcAddress("eglGetPlatformDisplayEXT"));
    char const* clientExtensions = eglQueryString(EGL_NO_DISPLAY, EGL_EXTENSIONS);
    if (getPlatformDisplay && clientExtensions &&
        std::string(clientExtensions).find("EGL_MESA_platform_surfaceless") != std::string::npos) {
        EGLDisplay display = getPlatformDisplay(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr);
        if (display != EGL_NO_DISPLAY && eglInitialize(display, nullptr, nullptr))
            return display;
    }
    EGLDisplay display = eglGetDisplay(EGL_DEFAULT_DISPLAY);
    if (display != EGL_NO_DISPLAY && eglInitialize(display, nullptr, nullptr))
        return display;
    return EGL_NO_DISPLAY;
}

} // namespace

CKVGraphicsWindowEGL::CKVGraphicsWindowEGL(osg::GraphicsContext::Traits* traits)
    : osgViewer::GraphicsWindowEmbedded(traits)
{
    if (!createContext()) {
        destroyContext();
        return;
    }
    // The shaders read their matrices from blocks only the backend's state
    // keeps current.
    CKVOSGState::install(*this);
}

CKVGraphicsWindowEGL::~CKVGraphicsWindowEGL()
{
    // The base destructor would only reach its own, empty close.
    close(true);
}

osg::ref_ptr<osg::GraphicsContext::Traits> CKVGraphicsWindowEGL::createTraits(int width, int height, int samples,
                                                                             int stencil)
{
    osg::ref_ptr<osg::GraphicsContext::Traits> traits = new osg::GraphicsContext::Traits;
    traits->x = 0;
    traits->y = 0;
    traits->width = width;
    traits->height = height;
    traits->alpha = 8;
    traits->depth = 24;
    traits->stencil = stencil > 0 ? static_cast<unsigned int>(stencil) : 0;
    traits->samples = samples > 0 ? static_cast<unsigned int>(samples) : 0;
    traits->sampleBuffers = samples > 0 ? 1 : 0;
    traits->doubleBuffer = false;
    traits->glContextProfileMask = 1;
    return traits;
}

bool CKVGraphicsWindowEGL::isSameKindAs(osg::Object const* object) const
{
    return object && std::string(object->className()) == className();
}

bool CKVGraphicsWindowEGL::createContext()
{
    if (!_traits.valid() || _traits->width <= 0 || _traits->height <= 0)
        return false;
    EGLDisplay display = openDisplay();
    if (display == EGL_NO_DISPLAY)
        return false;
    mDisplay = display;
    if (!eglBindAPI(EGL_OPENGL_API))
        return false;

    std::vector<EGLint> attributes = {EGL_SURFACE_TYPE, EGL_PBUFFER_BIT, EGL_RENDERABLE_TYPE, EGL_OPENGL_BIT,
                                      EGL_RED_SIZE, 8, EGL_GREEN_SIZE, 8, EGL_BLUE_SIZE, 8,
                                      EGL_ALPHA_SIZE, static_cast<EGLint>(_traits->alpha),
                                      EGL_DEPTH_SIZE, static_cast<EGLint>(_traits->depth),
                                      EGL_STENCIL_SIZE, static_cast<EGLint>(_traits->stencil)};
    if (_traits->samples > 0) {
        attributes.insert(attributes.end(), {EGL_SAMPLE_BUFFERS, 1, EGL_SAMPLES, static_cast<EGLint>(_traits->samples)});
    }
    attributes.push_back(EGL_NONE);
    EGLConfig config = nullptr;
    EGLint count = 0;
    if (!eglChooseConfig(display, attributes.data(), &config, 1, &count) || count < 1)
        return false;

    EGLint const surfaceAttributes[] = {EGL_WIDTH, _traits->width, EGL_HEIGHT, _traits->height, EGL_NONE};
    EGLSurface surface = eglCreatePbufferSurface(display, config, surfaceAttributes);
    if (surface == EGL_NO_SURFACE)
        return false;
    mSurface = surface;

    // Compatibility profile: the packaged OpenSceneGraph still applies
    // fixed-function state, which a core context would reject.
    EGLint const contextAttributes[] = {EGL_CONTEXT_OPENGL_PROFILE_MASK,
                                        EGL_CONTEXT_OPENGL_COMPATIBILITY_PROFILE_BIT, EGL_NONE};
    EGLContext context = eglCreateContext(display, config, EGL_NO_CONTEXT, contextAttributes);
    if (context == EGL_NO_CONTEXT)
        return false;
    mContext = context;
    return true;
}

void CKVGraphicsWindowEGL::destroyContext()
{
    EGLDisplay display = static_cast<EGLDisplay>(mDisplay);
    if (display != EGL_NO_DISPLAY && display) {
        if (mContext && eglGetCurrentContext() == static_cast<EGLContext>(mContext))
            eglMakeCurrent(display, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
        if (mContext)
            eglDestroyContext(display, static_cast<EGLContext>(mContext));
        if (mSurface)
            eglDestroySurface(display, static_cast<EGLSurface>(mSurface));
        // The display is shared by everything on this platform in the
        // process; terminating it would pull the rug from other windows.
    }
    mContext = nullptr;
    mSurface = nullptr;
    mDisplay = nullptr;
    mRealized = false;
}

bool CKVGraphicsWindowEGL::realizeImplementation()
{
    mRealized = valid();
    return mRealized;
}

void CKVGraphicsWindowEGL::closeImplementation()
{
    destroyContext();
}

bool CKVGraphicsWindowEGL::makeCurrentImplementation()
{
    if (!mRealized)
        return false;
    return eglMakeCurrent(static_cast<EGLDisplay>(mDisplay), static_cast<EGLSurface>(mSurface),
                          static_cast<EGLSurface>(mSurface), static_cast<EGLContext>(mContext)) == EGL_TRUE;
}

bool CKVGraphicsWindowEGL::releaseContextImplementation()
{
    if (!mDisplay)
        return false;
    return eglMakeCurrent(static_cast<EGLDisplay>(mDisplay), EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT) ==
           EGL_TRUE;
}

void CKVGraphicsWindowEGL::swapBuffersImplementation()
{
    // A pbuffer has nothing to show; this only marks the frame's end.
    if (mRealized)
        eglSwapBuffers(static_cast<EGLDisplay>(mDisplay), static_cast<EGLSurface>(mSurface));
}

void CKVGraphicsWindowEGL::runOperations()
{
    if (!mQuirksApplied && getState()) {
        CKVGLQuirks::apply(*getState());
        mQuirksApplied = true;
    }
    osgViewer::GraphicsWindowEmbedded::runOperations();
}

} // namespace Kelvor
