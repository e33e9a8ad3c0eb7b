#include "viewer/CKVGISCamera.h"

#include "viewer/DepthFunc.h"
#include "viewer/DepthRange.h"

namespace Kelvor {

CKVGISCamera::CKVGISCamera(osg::Camera* mainCamera)
{
    setName("GISCamera");
    // Drawn inside whatever pass the root is culled into (the window or the
    // root's own targets), at the place of this node among its siblings.
    setRenderOrder(osg::Camera::NESTED_RENDER, 0);
    setClearMask(0);
    setCullingMode(osg::CullSettings::VIEW_FRUSTUM_SIDES_CULLING);
    setAllowEventFocus(false);
    if (mainCamera) {
        // The same viewport object: a resize of the main camera is ours too.
        setViewport(mainCamera->getViewport());
        setGraphicsContext(mainCamera->getGraphicsContext());
    }
    setReferenceFrame(osg::Transform::RELATIVE_RF);

    osg::StateSet* stateSet = getOrCreateStateSet();
    // Near and far both 1: whatever is drawn here lies behind the model,
    // whose depth test (LEQUAL) then lets the model win everywhere.
    stateSet->setAttribute(new DepthRange(1.0, 1.0));
    stateSet->setMode(GL_BLEND, osg::StateAttribute::ON);
    stateSet->setAttribute(new DepthFunc(GL_LEQUAL));
}

CKVGISCamera::CKVGISCamera(CKVGISCamera const& other, osg::CopyOp const& copyop)
    : osg::Camera(other, copyop)
{
}

CKVGISCamera::~CKVGISCamera() = default;

osg::BoundingSphere CKVGISCamera::computeBound() const
{
    // Invalid on purpose: parents skip it when they sum their bounds, and an
    // invalid bound also keeps the node from being culled.
    return osg::BoundingSphere(osg::Vec3f(0.0f, 0.0f, 0.0f), -1.0f);
}

} // namespace Kelvor
