#include "viewer/CKVCaptureListener.h"

#include "viewer/CKVViewer.h"

#include <cfloat>

namespace Kelvor {

CKVCaptureListener::~CKVCaptureListener() = default;

void CKVCaptureListener::beginCapture(unsigned int, unsigned int, osg::Matrixd const&, osg::Matrixd const&)
{
}

void CKVCaptureListener::renderCaptureFrame(CKVViewer& viewer)
{
    viewer.advance(DBL_MAX);
    viewer.updateTraversal();
    viewer.renderingTraversals();
}

void CKVCaptureListener::endCapture()
{
}

} // namespace Kelvor
