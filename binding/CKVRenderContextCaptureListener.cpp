#include "binding/CKVRenderContextCaptureListener.h"

#include "binding/CKVCameraUniforms.h"
#include "binding/CKVRenderContextImp.h"
#include "effects/CKVPostProcessNode.h"
#include "viewer/CKVAxisHandle.h"

#include "TarnwickRender/CKVCamera.h"

#include <osg/StateSet>

namespace Kelvor {

namespace {

osg::Uniform* rootUniform(CKVRenderContextImp& context, char const* name)
{
    CKVPostProcessNode* root = context.getRoot();
    osg::StateSet* stateSet = root ? root->getStateSet() : nullptr;
    return stateSet ? stateSet->getUniform(name) : nullptr;
}

} // namespace

CKVRenderContextCaptureListener::CKVRenderContextCaptureListener(CKVRenderContextImp& context,
                                                                 CKVCamera const& camera, int viewWidth,
                                                                 int viewHeight)
    : mContext(context)
    , mCamera(camera)
    , mViewWidth(viewWidth)
    , mViewHeight(viewHeight)
{
}

void CKVRenderContextCaptureListener::beginCapture(unsigned int width, unsigned int height, osg::Matrixd const& view,
                                                   osg::Matrixd const& projection)
{
    // A capture at the window's size leaves every pass as it is.
    if (static_cast<int>(width) != mViewWidth || static_cast<int>(height) != mViewHeight) {
        mContext.resizeViews(static_cast<int>(width), static_cast<int>(height));
        mResized = true;
    }
    // The arrows belong to the window, not to the picture.
    if (CKVAxisHandle* handle = mContext.getAxisHandle())
        handle->setVisible(false);

    if (osg::Uniform* position = rootUniform(mContext, CKVCameraUniforms::kCameraPosition)) {
        position->get(mSavedPosition);
        position->set(CKVCameraUniforms::capturePosition(mCamera));
    }
    osg::Matrixf fixedProjection;
    osg::Uniform* fixed = rootUniform(mContext, CKVCameraUniforms::kFixedProjection);
    if (fixed && mCamera.getProjectMode() == CKVCamera::kPerspective &&
        CKVCameraUniforms::fixedProjection(projection, fixedProjection)) {
        fixed->get(mSavedFixedProjection);
        fixed->set(fixedProjection);
        mHasFixedProjection = true;
    }
    if (osg::Uniform* scaleOnly = rootUniform(mContext, CKVCameraUniforms::kScaleOnlyView)) {
        scaleOnly->get(mSavedScaleOnlyView);
        scaleOnly->set(CKVCameraUniforms::scaleOnlyView(view));
    }
}

void CKVRenderContextCaptureListener::renderCaptureFrame(CKVViewer&)
{
    mContext.renderFrame();
}

void CKVRenderContextCaptureListener::endCapture()
{
    if (osg::Uniform* position = rootUniform(mContext, CKVCameraUniforms::kCameraPosition))
        position->set(mSavedPosition);
    if (mHasFixedProjection) {
        if (osg::Uniform* fixed = rootUniform(mContext, CKVCameraUniforms::kFixedProjection))
            fixed->set(mSavedFixedProjection);
    }
    if (osg::Uniform* scaleOnly = rootUniform(mContext, CKVCameraUniforms::kScaleOnlyView))
        scaleOnly->set(mSavedScaleOnlyView);
    if (mResized)
        mContext.resizeViews(mViewWidth, mViewHeight);
    if (CKVAxisHandle* handle = mContext.getAxisHandle())
        handle->setVisible(true);
}

} // namespace Kelvor
