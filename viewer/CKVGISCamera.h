#pragma once

#include <osg/BoundingSphere>
#include <osg/Camera>

namespace Kelvor {

// A nested camera under the root that draws background content (the GIS
// group of the root) behind everything: its state pins every fragment to
// the far end of the depth range, and it inherits the main camera's view
// and projection. It never widens the scene's bound, so the frame's near
// and far clamp is decided by the model alone.
class CKVGISCamera : public osg::Camera
{
public:
    // Shares the main camera's viewport and window; null leaves both unset.
    explicit CKVGISCamera(osg::Camera* mainCamera = nullptr);
    CKVGISCamera(CKVGISCamera const& other, osg::CopyOp const& copyop = osg::CopyOp::SHALLOW_COPY);

    META_Object(kvosg, CKVGISCamera)

    // The empty sphere (centre at the origin, radius -1).
    osg::BoundingSphere computeBound() const override;

protected:
    ~CKVGISCamera() override;
};

} // namespace Kelvor
