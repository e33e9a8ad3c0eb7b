#pragma once

#include <osg/Matrixd>

namespace Kelvor {

class CKVViewer;

// The render context's part in a frame capture. The capture itself only
// knows the viewer and the main camera; sizing the passes, hiding overlays
// and pointing view-dependent uniforms at the capture camera are the
// context's business. Every hook has a harmless default.
class CKVCaptureListener
{
public:
    virtual ~CKVCaptureListener();

    // Before the capture frame, with the capture camera already in place.
    virtual void beginCapture(unsigned int width, unsigned int height,
                              osg::Matrixd const& view, osg::Matrixd const& projection);
    // Renders the one capture frame; the swap is already off. The default
    // runs advance, the update traversal and the rendering traversals.
    virtual void renderCaptureFrame(CKVViewer& viewer);
    // After the capture camera is gone and the main camera is restored,
    // before the file is written: undoes beginCapture.
    virtual void endCapture();
};

} // namespace Kelvor
