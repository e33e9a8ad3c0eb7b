#include "viewer/CKVFrameCapture.h"

#include "viewer/CKVCaptureListener.h"
#include "viewer/CKVViewer.h"

#include <osg/Uniform>
#include <osgDB/FileNameUtils>
#include <osgDB/Registry>
#include <osgDB/WriteFile>
#include <osgUtil/SceneView>
#include <osgViewer/Renderer>

namespace Kelvor {

namespace {

// Multisampling of the capture target; the driver's maximum caps it.
constexpr unsigned int kCaptureSamples = 8;

osgUtil::SceneView* firstSceneView(osg::Camera& camera)
{
    auto* renderer = dynamic_cast<osgViewer::Renderer*>(camera.getRenderer());
    return renderer ? renderer->getSceneView(0) : nullptr;
}

osg::ref_ptr<osg::Image> withoutAlpha(osg::Image const& rgba)
{
    osg::ref_ptr<osg::Image> rgb = new osg::Image;
    rgb->allocateImage(rgba.s(), rgba.t(), 1, GL_RGB, GL_UNSIGNED_BYTE, 1);
    for (int row = 0; row < rgba.t(); ++row) {
        unsigned char const* from = rgba.data(0, row);
        unsigned char* to = rgb->data(0, row);
        for (int column = 0; column < rgba.s(); ++column, from += 4, to += 3) {
            to[0] = from[0];
            to[1] = from[1];
            to[2] = from[2];
        }
    }
    return rgb;
}

} // namespace

CKVFrameCapture::CKVFrameCapture(CKVViewer* viewer, osg::Camera* mainCamera)
    : mViewer(viewer)
    , mMainCamera(mainCamera)
{
}

CKVFrameCapture::~CKVFrameCapture() = default;

bool CKVFrameCapture::writeImage(osg::Image const& image, std::string const& path)
{
    if (path.empty() || !image.data())
        return false;
    std::string const extension = osgDB::getLowerCaseFileExtension(path);
    osgDB::ReaderWriter::Options const* options = osgDB::Registry::instance()->getOptions();
    if ((extension == "jpg" || extension == "jpeg") && image.getPixelFormat() == GL_RGBA)
        return osgDB::writeImageFile(*withoutAlpha(image), path, options);
    return osgDB::writeImageFile(image, path, options);
}

osg::ref_ptr<osg::Camera> CKVFrameCapture::createCaptureCamera(unsigned int width, unsigned int height,
                                                               osg::Matrixd const& view,
                                                               osg::Matrixd const& projection)
{
    osg::ref_ptr<osg::Camera> camera = new osg::Camera;
    camera->setName("capture");
    camera->setGraphicsContext(mMainCamera->getGraphicsContext());
    camera->setViewport(0, 0, static_cast<int>(width), static_cast<int>(height));
    camera->setViewMatrix(view);
    camera->setProjectionMatrix(projection);
    camera->setReferenceFrame(osg::Transform::ABSOLUTE_RF);
    camera->setRenderOrder(osg::Camera::POST_RENDER, 0);
    camera->setClearMask(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    camera->setClearColor(mMainCamera->getClearColor());
    camera->setRenderTargetImplementation(osg::Camera::FRAME_BUFFER_OBJECT);

    mImage = new osg::Image;
    mImage->allocateImage(static_cast<int>(width), static_cast<int>(height), 1, GL_RGBA, GL_UNSIGNED_BYTE, 1);
    camera->attach(osg::Camera::COLOR_BUFFER, mImage.get(), kCaptureSamples, kCaptureSamples);
    return camera;
}

void CKVFrameCapture::shareFrameTime(osg::Camera& captureCamera) const
{
    osgUtil::SceneView* captureView = firstSceneView(captureCamera);
    if (!captureView)
        return;
    // The view matrix and its inverse only: the frame time comes from the
    // main pass, so that animated shaders show the same moment as the frame
    // around the capture.
    captureView->setActiveUniforms(osgUtil::SceneView::VIEW_MATRIX_UNIFORM |
                                   osgUtil::SceneView::VIEW_MATRIX_INVERSE_UNIFORM);

    osgUtil::SceneView* mainView = firstSceneView(*mMainCamera);
    osg::StateSet* mainLocal = mainView ? mainView->getLocalStateSet() : nullptr;
    osg::Uniform* frameTime = mainLocal ? mainLocal->getUniform("osg_FrameTime") : nullptr;
    if (!frameTime)
        return;
    float time = 0.0f;
    frameTime->get(time);
    osg::ref_ptr<osg::StateSet> local = new osg::StateSet;
    local->addUniform(new osg::Uniform("osg_FrameTime", time));
    captureView->setLocalStateSet(local.get());
}

bool CKVFrameCapture::capture(std::string const& path, unsigned int width, unsigned int height,
                              osg::Matrixd const& view, osg::Matrixd const& projection, bool thumbnail)
{
    osg::ref_ptr<CKVViewer> viewer;
    osg::ref_ptr<osg::Camera> mainCamera;
    if (!mViewer.lock(viewer) || !mMainCamera.lock(mainCamera))
        return false;
    width = evenSize(width);
    height = evenSize(height);
    if (width == 0 || height == 0)
        return false;

    CKVCaptureListener defaults;
    CKVCaptureListener& listener = mListener ? *mListener : defaults;

    osg::Matrixd const mainView = mainCamera->getViewMatrix();
    osg::Matrixd const mainProjection = mainCamera->getProjectionMatrix();
    osg::Transform::ReferenceFrame const mainFrame = mainCamera->getReferenceFrame();
    if (!thumbnail) {
        mainCamera->setReferenceFrame(osg::Transform::RELATIVE_RF);
        mainCamera->setViewMatrix(view);
        mainCamera->setProjectionMatrix(projection);
    }

    osg::ref_ptr<osg::Camera> captureCamera = createCaptureCamera(width, height, view, projection);
    unsigned int const slaveIndex = viewer->getNumSlaves();
    viewer->addSlave(captureCamera.get(), true);
    shareFrameTime(*captureCamera);

    listener.beginCapture(width, height, view, projection);

    bool const swapBuffers = viewer->getSwapBuffers();
    viewer->setSwapBuffers(false);
    listener.renderCaptureFrame(*viewer);
    viewer->setSwapBuffers(swapBuffers);

    viewer->removeSlave(slaveIndex);
    // Detach from the window now rather than whenever the last reference
    // goes, so that no later frame of the window visits the capture camera.
    captureCamera->setGraphicsContext(nullptr);

    if (!thumbnail) {
        mainCamera->setReferenceFrame(mainFrame);
        mainCamera->setViewMatrix(mainView);
        mainCamera->setProjectionMatrix(mainProjection);
    }

    listener.endCapture();

    return writeImage(*mImage, path);
}

} // namespace Kelvor
