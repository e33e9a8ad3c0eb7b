#pragma once

#include <osg/Matrixd>
#include <osg/Matrixf>
#include <osg/Vec3f>

namespace Kelvor {

class CKVCamera;

// The root uniforms that follow the host camera, and how each is derived
// from it. Shared by the camera command and by the capture, which points
// them at its own camera for one frame.
class CKVCameraUniforms
{
public:
    CKVCameraUniforms() = delete;

    static char const* const kCameraPosition;   // "camPos_W", vec3
    static char const* const kFixedProjection;  // "fixedProjectionMatrix", mat4
    static char const* const kScaleOnlyView;    // "scaleOnlyViewMatrix", mat4

    // Sky and water shaders need a projection whose planes do not move with
    // the scene's extent: the same angle and aspect with fixed planes.
    static constexpr double kFixedNear = 0.01;
    static constexpr double kFixedFar = 100000.0;
    // An orthographic capture looks from far above the model.
    static constexpr double kOrthographicCaptureHeight = 200000.0;

    static osg::Vec3f position(CKVCamera const& camera);
    // Where an orthographic camera is taken to stand for a capture.
    static osg::Vec3f capturePosition(CKVCamera const& camera);
    // False, with `out` untouched, when `projection` is not a perspective one.
    static bool fixedProjection(osg::Matrixd const& projection, osg::Matrixf& out);
    // The rotation part of a view matrix, without translation and scale.
    static osg::Matrixf scaleOnlyView(osg::Matrixd const& view);
};

} // namespace Kelvor
