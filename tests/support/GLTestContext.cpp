#include "support/GLTestContext.h"

#include <osg/GLObjects>

#include <cstdlib>

// Last: Xlib defines macros (None, Status, Bool) that collide with C++ names.
#include <X11/Xlib.h>
#include "support/XDisplayRetry.h"

namespace Kelvor {

namespace {

// Reads the colour buffer at the end of the camera's draw, before the viewer
// swaps buffers: after the swap the back buffer's content is undefined.
class ReadBackCallback : public osg::Camera::DrawCallback
{
public:
    ReadBackCallback(int width, int height)
        : mImage(new osg::Image)
        , mWidth(width)
        , mHeight(height)
    {
    }

    void operator()(osg::RenderInfo&) const override
    {
        mImage->readPixels(0, 0, mWidth, mHeight, GL_RGBA, GL_UNSIGNED_BYTE);
    }

    osg::ref_ptr<osg::Image> image() const { return mImage; }

private:
    osg::ref_ptr<osg::Image> mImage;
    int mWidth;
    int mHeight;
};

} // namespace

bool GLTestContext::displayAvailable(std::string* reason)
{
    char const* name = std::getenv("DISPLAY");
    if (name == nullptr || name[0] == '\0')
    {
        if (reason)
            *reason = "DISPLAY is not set";
        return false;
    }
    Display* display = openTestDisplay(name);
    if (display == nullptr)
    {
        if (reason)
            *reason = std::string("cannot open X display ") + name;
        return false;
    }
    XCloseDisplay(display);
    return true;
}

GLTestContext::GLTestContext(int width, int height)
    : mWidth(width)
    , mHeight(height)
{
    createContext();
}

GLTestContext::~GLTestContext()
{
    close();
}

bool GLTestContext::createContext()
{
    osg::ref_ptr<osg::GraphicsContext::Traits> traits = new osg::GraphicsContext::Traits;
    traits->readDISPLAY();
    traits->setUndefinedScreenDetailsToDefaultScreen();
    traits->x = 0;
    traits->y = 0;
    traits->width = mWidth;
    traits->height = mHeight;
    traits->windowDecoration = false;
    traits->doubleBuffer = true;
    traits->depth = 24;
    traits->stencil = 8;
    traits->vsync = false;
    // The packaged OpenSceneGraph is a GL2 build: version "1.0" takes the
    // legacy creation path, which gives the driver's highest compatibility
    // profile (4.5 on llvmpipe). Asking for 4.x would give a core profile.
    traits->glContextVersion = "1.0";
    traits->glContextProfileMask = 1;

    mContext = osg::GraphicsContext::createGraphicsContext(traits.get());
    if (!mContext.valid())
    {
        mError = "could not create a GL window on display " + traits->displayName();
        return false;
    }

    osg::ref_ptr<osgViewer::Viewer> viewer = new osgViewer::Viewer;
    viewer->setThreadingModel(osgViewer::ViewerBase::SingleThreaded);
    // A stray key or close event in the test window must not end the viewer.
    viewer->setKeyEventSetsDone(0);
    viewer->setQuitEventSetsDone(false);
    osg::Camera* camera = viewer->getCamera();
    camera->setGraphicsContext(mContext.get());
    camera->setViewport(0, 0, mWidth, mHeight);
    camera->setDrawBuffer(GL_BACK);
    camera->setReadBuffer(GL_BACK);
    viewer->realize();
    if (!viewer->isRealized() || !mContext->isRealized())
    {
        mError = "the viewer could not realize its GL window";
        camera->setGraphicsContext(nullptr);
        mContext->close();
        mContext = nullptr;
        return false;
    }
    mViewer = viewer;
    return true;
}

osg::ref_ptr<osg::Image> GLTestContext::renderFrames(osg::Node* scene, int frames, int width, int height)
{
    if (!valid())
    {
        if (mError.empty())
            mError = "the GL context is closed";
        return nullptr;
    }
    if (width <= 0 || height <= 0 || width > mWidth || height > mHeight || frames < 1)
    {
        mError = "cannot render " + std::to_string(frames) + " frames at " + std::to_string(width) + "x"
            + std::to_string(height) + " in a " + std::to_string(mWidth) + "x" + std::to_string(mHeight) + " window";
        return nullptr;
    }
    if (mViewer->getSceneData() != scene)
    {
        dropScene();
        mViewer->setSceneData(scene);
    }
    osg::Camera* camera = mViewer->getCamera();
    camera->setViewport(0, 0, width, height);

    for (int i = 0; i + 1 < frames; ++i)
        mViewer->frame();
    osg::ref_ptr<ReadBackCallback> readBack = new ReadBackCallback(width, height);
    camera->setFinalDrawCallback(readBack.get());
    mViewer->frame();
    camera->setFinalDrawCallback(nullptr);

    osg::ref_ptr<osg::Image> image = readBack->image();
    if (image->data() == nullptr)
    {
        mError = "the frame was not drawn";
        return nullptr;
    }
    return image;
}

osg::ref_ptr<osg::Image> GLTestContext::renderFrames(osg::Node* scene, int frames)
{
    return renderFrames(scene, frames, mWidth, mHeight);
}

bool GLTestContext::runWithContext(std::function<void(osg::State&)> const& work)
{
    if (!mContext.valid() || !mContext->makeCurrent())
        return false;
    // Extension entry points are looked up on first use of a context; work
    // may run before any frame has.
    mContext->getState()->initializeExtensionProcs();
    work(*mContext->getState());
    mContext->releaseContext();
    return true;
}

void GLTestContext::dropScene()
{
    osg::ref_ptr<osg::Node> scene = mViewer->getSceneData();
    if (!scene.valid())
        return;
    // Frees the scene's buffers, textures and programs now, while their
    // context is current, instead of leaving them to whatever outlives it:
    // the scene may be drawn again by a later context with the same id.
    if (mContext->makeCurrent())
    {
        scene->releaseGLObjects(mContext->getState());
        osg::flushAllDeletedGLObjects(mContext->getState()->getContextID());
        mContext->releaseContext();
    }
    mViewer->setSceneData(nullptr);
}

void GLTestContext::close()
{
    if (mViewer.valid())
    {
        dropScene();
        mViewer->getCamera()->setFinalDrawCallback(nullptr);
    }
    if (mContext.valid())
    {
        // Releases the cameras' GL objects, deletes what is left in this
        // context and destroys the window.
        mContext->close();
    }
    if (mViewer.valid())
        mViewer->getCamera()->setGraphicsContext(nullptr);
    mViewer = nullptr;
    mContext = nullptr;
}

} // namespace Kelvor
