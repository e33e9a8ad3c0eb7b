#pragma once

// The backend's viewer drawing into a host-owned X window, set up the way
// the render context does it (single-threaded, main camera on our window,
// frames run as advance, update, rendering traversals). Header-only, shared
// by the GL tests of this folder.

#include "viewer/CKVGraphicsWindowX11.h"
#include "viewer/CKVOSGCamera.h"
#include "viewer/CKVViewer.h"

#include "FlatSquare.h"
#include "HostDisplayTest.h"

#include <osg/GLObjects>
#include <osg/Image>

#include <cfloat>
#include <cstring>
#include <memory>
#include <string>

namespace Kelvor {
namespace viewertest {

osg::Vec4 const kQuadColour(1.0f, 0.8f, 0.0f, 1.0f);

// The backend's viewer and main camera on `window`, looking at a flat quad
// over the middle half of a (-1, 1) square, set up the way the render
// context does it.
class ViewerRig
{
public:
    ViewerRig(osg::GraphicsContext* window, int width, int height)
        : mWindow(window)
    {
        mCamera = new CKVOSGCamera;
        mCamera->setName("MainCamera");
        mCamera->setGraphicsContext(window);
        mCamera->setViewport(0, 0, width, height);
        mCamera->setProjectionMatrixAsOrtho2D(-1.0, 1.0, -1.0, 1.0);
        mCamera->setReferenceFrame(osg::Transform::ABSOLUTE_RF);
        mCamera->setComputeNearFarMode(osg::CullSettings::DO_NOT_COMPUTE_NEAR_FAR);
        mCamera->setClearMask(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        if (window->getTraits() && window->getTraits()->doubleBuffer) {
            mCamera->setDrawBuffer(GL_BACK);
            mCamera->setReadBuffer(GL_BACK);
        }
        mViewer = new CKVViewer;
        mViewer->setCamera(mCamera.get());
        mViewer->setThreadingModel(osgViewer::ViewerBase::SingleThreaded);
        mViewer->setKeyEventSetsDone(0);
        mViewer->setQuitEventSetsDone(false);
        mScene = new osg::Group;
        osg::ref_ptr<osg::Geode> quad = makeFlatSquare(osg::Vec3(-0.5f, -0.5f, 0.0f), 1.0f, kQuadColour);
        quad->getOrCreateStateSet()->setMode(GL_LIGHTING, osg::StateAttribute::OFF);
        mScene->addChild(quad.get());
        mViewer->setSceneData(mScene.get());
        mViewer->realize();
    }

    ~ViewerRig() { release(); }

    CKVOSGCamera* camera() { return mCamera.get(); }
    CKVViewer* viewer() { return mViewer.get(); }
    osg::Group* scene() { return mScene.get(); }

    // One frame as the render context's tick runs it.
    void frame()
    {
        mViewer->advance(DBL_MAX);
        mViewer->updateTraversal();
        mViewer->renderingTraversals();
    }

    // Frees the scene's GL objects while the context lives, then drops the
    // viewer; the window is the caller's to close.
    void release()
    {
        if (!mViewer.valid())
            return;
        if (mWindow->valid() && mWindow->makeCurrent()) {
            mScene->releaseGLObjects(mWindow->getState());
            osg::flushAllDeletedGLObjects(mWindow->getState()->getContextID());
            mWindow->releaseContext();
        }
        mViewer->setSceneData(nullptr);
        mViewer = nullptr;
        mCamera = nullptr;
    }

private:
    osg::GraphicsContext* mWindow;
    osg::ref_ptr<CKVOSGCamera> mCamera;
    osg::ref_ptr<CKVViewer> mViewer;
    osg::ref_ptr<osg::Group> mScene;
};

// The rig on a host-owned X window.
class ViewerOnHostWindow
{
public:
    ViewerOnHostWindow(int width, int height)
        : mHost(width, height)
    {
        if (!mHost.valid()) {
            mError = "the host window could not be created";
            return;
        }
        mWindow = new CKVGraphicsWindowX11(
            CKVGraphicsWindowX11::createTraits(mHost.display(), mHost.window(), true, 0, 0).get());
        if (!mWindow->valid()) {
            mError = "the window did not attach to the host window";
            return;
        }
        mRig = std::make_unique<ViewerRig>(mWindow.get(), width, height);
        if (!mRig->viewer()->isRealized())
            mError = "the viewer could not realize the window";
    }

    ~ViewerOnHostWindow() { close(); }

    bool valid() const { return mError.empty(); }
    std::string const& error() const { return mError; }

    HostX11Window& host() { return mHost; }
    CKVGraphicsWindowX11* window() { return mWindow.get(); }
    CKVOSGCamera* camera() { return mRig->camera(); }
    CKVViewer* viewer() { return mRig->viewer(); }
    osg::Group* scene() { return mRig->scene(); }
    void frame() { mRig->frame(); }

    // The window's `buffer` as the GL sees it, as RGBA, bottom row first.
    // For what is on screen use host().shown().
    osg::ref_ptr<osg::Image> readBuffer(GLenum buffer)
    {
        if (!mWindow->makeCurrent())
            return nullptr;
        glReadBuffer(buffer);
        osg::ref_ptr<osg::Image> image = new osg::Image;
        image->readPixels(0, 0, mWindow->getTraits()->width, mWindow->getTraits()->height, GL_RGBA,
                          GL_UNSIGNED_BYTE);
        glReadBuffer(GL_BACK);
        mWindow->releaseContext();
        return image;
    }

    // Closes the viewer and the window; the host window stays.
    void close()
    {
        // As the render context does: no tick may render into what goes next.
        if (mWindow.valid())
            mWindow->stopTimer();
        mRig.reset();
        if (mWindow.valid()) {
            mWindow->close();
            mWindow = nullptr;
        }
    }

private:
    HostX11Window mHost;
    std::string mError;
    osg::ref_ptr<CKVGraphicsWindowX11> mWindow;
    std::unique_ptr<ViewerRig> mRig;
};

// Fixture: a fresh viewer on a Width x Height host window per test.
template <int Width, int Height>
class ViewerOnHostWindowTest : public HostDisplayTest
{
protected:
    void SetUp() override
    {
        HostDisplayTest::SetUp();
        if (IsSkipped() || HasFatalFailure())
            return;
        mSetup = std::make_unique<ViewerOnHostWindow>(Width, Height);
        ASSERT_TRUE(mSetup->valid()) << mSetup->error();
    }
    void TearDown() override { mSetup.reset(); }

    std::unique_ptr<ViewerOnHostWindow> mSetup;
};

// The pixel at (x, y), counted from the bottom left, as 8-bit RGBA.
inline osg::Vec4ub pixelAt(osg::Image const& image, int x, int y)
{
    unsigned char const* p = image.data(x, y);
    if (image.getPixelFormat() == GL_RGB)
        return osg::Vec4ub(p[0], p[1], p[2], 255);
    return osg::Vec4ub(p[0], p[1], p[2], p[3]);
}

inline bool samePixels(osg::Image const& a, osg::Image const& b)
{
    return a.s() == b.s() && a.t() == b.t() && a.getTotalSizeInBytes() == b.getTotalSizeInBytes() &&
           std::memcmp(a.data(), b.data(), a.getTotalSizeInBytes()) == 0;
}

inline bool near(osg::Vec4ub const& pixel, osg::Vec4 const& colour, int tolerance = 3)
{
    for (int i = 0; i < 3; ++i) {
        int const expected = static_cast<int>(colour[i] * 255.0f + 0.5f);
        if (std::abs(static_cast<int>(pixel[i]) - expected) > tolerance)
            return false;
    }
    return true;
}

} // namespace viewertest
} // namespace Kelvor
