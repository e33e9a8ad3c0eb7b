#pragma once

#include <osg/Camera>
#include <osg/GraphicsContext>
#include <osg/Image>
#include <osg/Node>
#include <osg/State>
#include <osg/ref_ptr>
#include <osgViewer/Viewer>

#include <functional>
#include <string>

namespace Kelvor {

// A GL context for tests: a small undecorated double-buffered window on the X
// display named by DISPLAY (Xvfb in CI), driven by a single-threaded
// osgViewer::Viewer. The context is a compatibility profile (the packaged
// OpenSceneGraph applies fixed-function state that a core context rejects).
//
// OpenSceneGraph crashes at exit when a context or a scene that still owns GL
// objects is left to static destruction, so close() tears down in order and
// the destructor calls it; tests should still close explicitly when they care
// about the point of teardown.
class GLTestContext
{
public:
    static constexpr int kDefaultSize = 128;

    // True when an X display answers. Otherwise false, with why in `reason`.
    static bool displayAvailable(std::string* reason = nullptr);

    explicit GLTestContext(int width = kDefaultSize, int height = kDefaultSize);
    ~GLTestContext();
    GLTestContext(GLTestContext const&) = delete;
    GLTestContext& operator=(GLTestContext const&) = delete;

    // False when the window or the viewer could not be made; error() says why.
    bool valid() const { return mViewer.valid(); }
    std::string const& error() const { return mError; }

    int width() const { return mWidth; }
    int height() const { return mHeight; }

    osgViewer::Viewer* viewer() { return mViewer.get(); }
    osg::Camera* camera() { return mViewer.valid() ? mViewer->getCamera() : nullptr; }
    osg::GraphicsContext* graphicsContext() { return mContext.get(); }
    osg::State* state() { return mContext.valid() ? mContext->getState() : nullptr; }

    // Makes `scene` the viewer's scene, renders `frames` frames into the
    // lower-left width x height of the window and returns the last frame's
    // colour buffer as 8-bit RGBA. Rows are bottom-up, as glReadPixels gives
    // them and as osg::Image expects (origin BOTTOM_LEFT); the PNG writer
    // turns them upright. Null, with error() set, when the context is not
    // valid or the size exceeds the window. The scene stays set until the
    // next call or close(), so GL objects it made can still be read.
    osg::ref_ptr<osg::Image> renderFrames(osg::Node* scene, int frames, int width, int height);
    osg::ref_ptr<osg::Image> renderFrames(osg::Node* scene, int frames = 1);

    // Runs `work` with the context current and releases it afterwards (the
    // viewer releases the context at the end of every frame). False when the
    // context could not be made current.
    bool runWithContext(std::function<void(osg::State&)> const& work);

    // Releases the scene's GL objects while the context is current, drops the
    // scene, closes the context and the viewer. Safe to call twice.
    void close();

private:
    bool createContext();
    // Releases the current scene's GL objects in this context and unsets it.
    void dropScene();

    int mWidth;
    int mHeight;
    std::string mError;
    osg::ref_ptr<osg::GraphicsContext> mContext;
    osg::ref_ptr<osgViewer::Viewer> mViewer;
};

} // namespace Kelvor
