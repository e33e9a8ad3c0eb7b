#include "binding/CKVCameraUniforms.h"

#include "TarnwickRender/CKVCamera.h"

#include <osg/Quat>

namespace Kelvor {

char const* const CKVCameraUniforms::kCameraPosition = "camPos_W";
char const* const CKVCameraUniforms::kFixedProjection = "fixedProjectionMatrix";
char const* const CKVCameraUniforms::kScaleOnlyView = "scaleOnlyViewMatrix";

osg::Vec3f CKVCameraUniforms::position(CKVCamera const& camera)
{
    CKVPoint3D const& p = camera.getPosition();
    return osg::Vec3f(static_cast<float>(p.x), static_cast<float>(p.y), static_cast<float>(p.z));
}

osg::Vec3f CKVCameraUniforms::capturePosition(CKVCamera const& camera)
{
    osg::Vec3f p = position(camera);
    if (camera.getProjectMode() == CKVCamera::kOrthographic)
        p.z() = static_cast<float>(kOrthographicCaptureHeight);
    return p;
}

bool CKVCameraUniforms::fixedProjection(osg::Matrixd const& projection, osg::Matrixf& out)
{
    double fovy = 0.0;
    double aspect = 0.0;
    double zNear = 0.0;
    double zFar = 0.0;
    if (!projection.getPerspective(fovy, aspect, zNear, zFar))
        return false;
    out = osg::Matrixf(osg::Matrixd::perspective(fovy, aspect, kFixedNear, kFixedFar));
    return true;
}

osg::Matrixf CKVCameraUniforms::scaleOnlyView(osg::Matrixd const& view)
{
    osg::Vec3d translation;
    osg::Quat rotation;
    osg::Vec3d scale;
    osg::Quat scaleOrientation;
    view.decompose(translation, rotation, scale, scaleOrientation);
    return osg::Matrixf(osg::Matrixd::rotate(rotation));
}

} // namespace Kelvor
