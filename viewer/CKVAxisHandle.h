#pragma once

#include "TarnwickCommon/CKVSharedObject.h"
#include "TarnwickCommon/kv_shared_ptr.h"

#include <osg/Camera>
#include <osg/GraphicsContext>
#include <osg/ref_ptr>

namespace Kelvor {

class CKVCamera;
class CKVSceneNodeImp;

// Three arrows (x red, y green, z blue) in the bottom-left corner of the
// window that turn with the host's camera. They live in a scene of their
// own under a slave camera of the viewer, which the render context adds;
// the arrows are ordinary host scene nodes, so they are drawn and hidden
// like any other.
class CKVAxisHandle : public CKVSharedObject
{
    KV_DECLARE_RUNTIME_CLASS(CKVAxisHandle)
public:
    CKVAxisHandle();
    ~CKVAxisHandle() override;

    // Makes the slave camera "slave_axis" on `graphicsContext` and the arrow
    // scene under it. False, with nothing made, for a null context or when
    // an arrow can't be built (no buffer geometry factory registered).
    bool initialize(osg::GraphicsContext* graphicsContext);

    // Looks at the origin from 100 units away along the host camera's
    // viewing direction, with its up vector: the arrows show the world axes
    // as the host camera sees them. Nothing without a camera of our own.
    void update(CKVCamera const& camera);

    // The handle shrinks to 100 by 100 pixels at the first resize of the
    // window and stays so; the arguments are not used.
    void resize(int width, int height);

    // Shows or hides the arrows (a capture hides them). Nothing before
    // `initialize`.
    void setVisible(bool visible);

    // Null before `initialize`.
    osg::Camera* getCamera() const { return mCamera.get(); }
    CKVSceneNodeImp* getRootNode() const { return mRootNode.get(); }

    // Drops the camera's window, so that the handle no longer keeps it
    // alive once the window has closed.
    void releaseGraphicsContext();

private:
    bool buildArrows();

    osg::ref_ptr<osg::Camera> mCamera;
    kv_shared_ptr<CKVSceneNodeImp> mRootNode;
};

} // namespace Kelvor
