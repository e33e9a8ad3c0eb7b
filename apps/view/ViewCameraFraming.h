#pragma once

#include "TarnwickGeometry/CKVBndBox.h"
#include "TarnwickRender/CKVCamera.h"

#include <string>

namespace Kelvor {

// The starting camera of the viewer: a named view that shows the whole
// model, or an explicit eye and target. World z is up; "front" looks along
// +y, as at a building whose entrance faces south.
class ViewCameraFraming
{
public:
    // Vertical field of view in degrees.
    static constexpr double kFieldOfView = 45.0;

    // False for an unknown name or an invalid box; the camera is left alone.
    static bool frame(CKVBndBox const& box, std::string const& viewName, double aspect, CKVCamera& camera);
    static void lookAt(CKVPoint3D const& eye, CKVPoint3D const& target, double aspect, double sceneRadius,
                       CKVCamera& camera);
};

} // namespace Kelvor
