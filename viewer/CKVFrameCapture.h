#pragma once

#include <osg/Camera>
#include <osg/Image>
#include <osg/Matrixd>
#include <osg/observer_ptr>

#include <string>

namespace Kelvor {

class CKVCaptureListener;
class CKVViewer;

// Renders one extra frame of the viewer into an off-screen target of a
// requested size and writes it to an image file. The window keeps what it
// showed (the swap is off for that frame) and the main camera is left as it
// was found. Runs on the render thread with the context's frame lock held.
class CKVFrameCapture
{
public:
    CKVFrameCapture(CKVViewer* viewer, osg::Camera* mainCamera);
    ~CKVFrameCapture();

    CKVFrameCapture(CKVFrameCapture const&) = delete;
    CKVFrameCapture& operator=(CKVFrameCapture const&) = delete;

    // Not owned; null uses the defaults of CKVCaptureListener.
    void setListener(CKVCaptureListener* listener) { mListener = listener; }

    // Captures with the host camera's `view` and `projection` (as osg
    // matrices). Sizes are rounded down to even; a size that is 0 after that
    // captures nothing. Unless `thumbnail`, the main camera takes the host
    // camera's matrices for the frame too. The file type follows the path's
    // extension. True when the file was written.
    bool capture(std::string const& path, unsigned int width, unsigned int height,
                 osg::Matrixd const& view, osg::Matrixd const& projection, bool thumbnail);

    // The pixels of the last capture (RGBA, bottom row first); null before.
    osg::Image* getImage() const { return mImage.get(); }

    // Even, and below 2^28, as the off-screen targets require.
    static unsigned int evenSize(unsigned int size) { return size & 0xFFFFFFEu; }

    // Writes `image` to `path`; JPEG gets an RGB copy, as its writer refuses
    // an alpha channel.
    static bool writeImage(osg::Image const& image, std::string const& path);

private:
    osg::ref_ptr<osg::Camera> createCaptureCamera(unsigned int width, unsigned int height,
                                                  osg::Matrixd const& view, osg::Matrixd const& projection);
    void shareFrameTime(osg::Camera& captureCamera) const;

    osg::observer_ptr<CKVViewer> mViewer;
    osg::observer_ptr<osg::Camera> mMainCamera;
    CKVCaptureListener* mListener = nullptr;
    osg::ref_ptr<osg::Image> mImage;
};

} // namespace Kelvor
