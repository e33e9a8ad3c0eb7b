#pragma once

#include "viewer/CKVCaptureListener.h"

#include <osg/Matrixf>
#include <osg/Vec3f>

namespace Kelvor {

class CKVCamera;
class CKVRenderContextImp;

// The render context's side of one capture frame: the passes take the
// capture's size, the camera uniforms follow the capture camera, and the
// frame is the context's own. Everything is put back afterwards.
class CKVRenderContextCaptureListener : public CKVCaptureListener
{
public:
    // `viewWidth` and `viewHeight` are the window's viewport, to come back to.
    CKVRenderContextCaptureListener(CKVRenderContextImp& context, CKVCamera const& camera, int viewWidth,
                                    int viewHeight);

    void beginCapture(unsigned int width, unsigned int height, osg::Matrixd const& view,
                      osg::Matrixd const& projection) override;
    void renderCaptureFrame(CKVViewer& viewer) override;
    void endCapture() override;

    bool resized() const { return mResized; }

private:
    CKVRenderContextImp& mContext;
    CKVCamera const& mCamera;
    int mViewWidth;
    int mViewHeight;
    bool mResized = false;
    bool mHasFixedProjection = false;
    osg::Vec3f mSavedPosition;
    osg::Matrixf mSavedFixedProjection;
    osg::Matrixf mSavedScaleOnlyView;
};

} // namespace Kelvor
