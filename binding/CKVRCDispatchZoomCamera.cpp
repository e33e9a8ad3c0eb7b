#include "binding/CKVRCDispatchZoomCamera.h"

#include "binding/CKVRCDispatchChecks.h"
#include "binding/CKVRenderContextImp.h"
#include "effects/CKVPostProcessNode.h"
#include "viewer/CKVOSGCamera.h"

#include "TarnwickGeometry/CKVBndBox.h"
#include "TarnwickGeometry/CKVPlane.h"
#include "TarnwickGeometry/CKVRay3D.h"
#include "TarnwickRender/CKVCamera.h"
#include "TarnwickRender/CKVEvent.h"
#include "TarnwickRender/CKVGraphicsModel.h"
#include "TarnwickRender/CKVGraphicsModelField.h"
#include "TarnwickRender/CKVRCZoomCamera.h"
#include "TarnwickRender/CKVScene.h"
#include "TarnwickRender/CKVSceneNode.h"

#include <osg/GL>
#include <osg/GraphicsContext>
#include <osg/State>
#include <osg/Texture2D>
#include <osg/Viewport>

#include <vector>

namespace Kelvor {

namespace {

constexpr double kTolerance = 1.0e-6;
constexpr double kZoomIn = 0.75;
constexpr double kZoomOut = 1.25;
// The graphics model field whose node box also bounds the zoom focus.
constexpr unsigned int kZoomBoundField = 7;

// The texel (x, y) of a depth texture, read whole: a single texel cannot be
// asked for without a framebuffer of its own. 1.0 when the texture has no GL
// object in this context yet or the texel lies outside it.
double readDepthTexel(osg::Texture2D const& texture, unsigned int contextID, int x, int y)
{
    osg::Texture::TextureObject const* object = texture.getTextureObject(contextID);
    int const width = texture.getTextureWidth();
    int const height = texture.getTextureHeight();
    if (!object || x >= width || y >= height)
        return 1.0;
    std::vector<GLfloat> depths(static_cast<std::size_t>(width) * static_cast<std::size_t>(height), 1.0f);
    // OpenSceneGraph tracks the bindings it made; put back the one it expects.
    GLint previous = 0;
    glGetIntegerv(GL_TEXTURE_BINDING_2D, &previous);
    glBindTexture(GL_TEXTURE_2D, object->id());
    glGetTexImage(GL_TEXTURE_2D, 0, GL_DEPTH_COMPONENT, GL_FLOAT, depths.data());
    glBindTexture(GL_TEXTURE_2D, static_cast<GLuint>(previous));
    return depths[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x)];
}

} // namespace

KV_IMPLEMENT_RUNTIME_CLASS_DYNAMIC(CKVRCDispatchZoomCamera, CKVRenderCommandDispatch)

CKVRCDispatchZoomCamera::CKVRCDispatchZoomCamera() = default;

CKVRCDispatchZoomCamera::~CKVRCDispatchZoomCamera() = default;

double CKVRCDispatchZoomCamera::readDepth(CKVOSGCamera const& camera, CKVPostProcessNode const* root,
                                          CKVPoint3D const& pixel)
{
    osg::Viewport const* viewport = camera.getViewport();
    if (!viewport)
        return 1.0;
    int const x = static_cast<int>(pixel.x);
    int const y = static_cast<int>(viewport->height() - pixel.y);
    if (x < 0 || y < 0 || x >= static_cast<int>(viewport->width()) || y >= static_cast<int>(viewport->height()))
        return 1.0;
    // With a full-screen effect on, the window's depth buffer stays empty:
    // the scene was drawn into the root's targets.
    osg::Texture2D const* target = root ? root->getSceneDepthTexture() : nullptr;
    osg::GraphicsContext const* window = camera.getGraphicsContext();
    if (target && window && window->getState())
        return readDepthTexel(*target, window->getState()->getContextID(), x, y);
    GLfloat depth = 1.0f;
    glReadPixels(x, y, 1, 1, GL_DEPTH_COMPONENT, GL_FLOAT, &depth);
    return depth;
}

CKVPoint3D CKVRCDispatchZoomCamera::unproject(CKVOSGCamera const& camera, CKVPoint3D const& pixel, double depth)
{
    osg::Viewport const* viewport = camera.getViewport();
    double const width = viewport->width();
    double const height = viewport->height();
    osg::Vec3d point(2.0 * pixel.x / width - 1.0, 1.0 - 2.0 * pixel.y / height, 2.0 * depth - 1.0);
    point = osg::Matrixd::inverse(camera.getCullProjection()).preMult(point);
    point = camera.getInverseViewMatrix().preMult(point);
    return CKVPoint3D(point.x(), point.y(), point.z());
}

void CKVRCDispatchZoomCamera::limitByModel(CKVGraphicsModel& model, CKVCamera const& camera, CKVEvent const& event,
                                           CKVPoint3D& focus)
{
    CKVBndBox box = model.getBoundingBox();
    if (CKVGraphicsModelField* field = model.getField(kZoomBoundField)) {
        if (CKVSceneNode* node = field->getNodeObject())
            box.addBndBox(node->computeBoundingBox());
    }
    if (!box.valid())
        return;
    CKVVector3D direction = camera.getTarget() - camera.getPosition();
    unsigned int const farCorner = (direction.z > 0.0 ? 4u : 0u) | (direction.y > 0.0 ? 2u : 0u) |
                                   (direction.x > 0.0 ? 1u : 0u);
    direction.normalize(kTolerance);
    CKVPlane const farSide(box.corner(farCorner), direction);
    if (focus.distanceTo(farSide, false) > 0.0)
        event.getSelectRay().hitPlane(farSide, focus, kTolerance);
}

bool CKVRCDispatchZoomCamera::dispatch(CKVRenderContext* context, CKVRenderCommand& command)
{
    CKVRenderContextImp* imp = CKVRCDispatchChecks::context(context);
    auto* record = CKVRCDispatchChecks::record<CKVRCZoomCamera>(command);
    if (!imp || !record || !record->getSceneCamera())
        return false;
    CKVEvent const& event = record->getEvent();
    CKVScene* scene = event.getScene();
    if (!scene)
        return false;

    CKVCamera working = *record->getSceneCamera();
    CKVCamera const original = working;
    CKVPoint3D const& pixel = event.getNDCPos();

    CKVOSGCamera const* mainCamera = imp->getMainCamera();
    double const depth = mainCamera ? readDepth(*mainCamera, imp->getRoot(), pixel) : 1.0;
    CKVPoint3D focus;
    if (depth < 1.0) {
        focus = unproject(*mainCamera, pixel, depth);
        if (CKVGraphicsModel* model = imp->getGraphicsModel())
            limitByModel(*model, working, event, focus);
        // Zoom about the plane through the focus facing the camera: the
        // target moves onto it, and the focus onto the ray under the cursor,
        // so that the rounding of the depth read cannot shift the picture.
        CKVPlane const focusPlane(focus, working.getPosition() - working.getTarget());
        CKVPoint3D target;
        if (working.getPosition().projectTo(focusPlane, focusPlane.getNormal(), target, kTolerance))
            working.setTarget(target);
        CKVRay3D ray;
        if (scene->getSelectRay(pixel, ray))
            ray.origin().projectTo(focusPlane, ray.direction(), focus, kTolerance);
    } else {
        focus = event.getWorldPos();
    }

    double const factor = event.getMouseWheel() == CKVEvent::kWheelAwayFromUser ? kZoomIn : kZoomOut;
    double const distance = working.getDistance() * factor;
    CKVRenderConfig const& config = imp->getRenderConfig();
    if (distance < config.getMinZoomDistance() && factor < 1.0)
        return false;
    if (distance > config.getMaxZoomDistance() && factor > 1.0)
        return false;

    working.zoom(factor);
    record->applySceneCamera(working);

    // Pan so that the focus is under the cursor again.
    CKVRay3D ray;
    if (scene->getSelectRay(pixel, ray)) {
        CKVPlane const targetPlane(working.getTarget(), working.getPosition() - working.getTarget());
        CKVPoint3D underCursor;
        if (ray.origin().projectTo(targetPlane, ray.direction(), underCursor, kTolerance))
            working.pan(focus - underCursor);
    }

    if (!imp->applyCamera(working)) {
        record->applySceneCamera(original);
        return false;
    }
    record->applySceneCamera(working);
    if (!record->getSync())
        scene->cameraPosChanged();
    return true;
}

} // namespace Kelvor
