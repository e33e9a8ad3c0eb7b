#include "apps/view/ViewCameraFraming.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Kelvor {

namespace {

constexpr double kPi = 3.14159265358979323846;

// A margin around the bounding sphere so that the model does not touch the
// picture's edges.
constexpr double kMargin = 1.08;

bool directionOf(std::string const& name, CKVVector3D& direction)
{
    // From the target towards the eye.
    // The oblique view looks down only so far that the horizon, and the sky
    // above it, stay in the upper part of the picture.
    if (name == "iso")
        direction = CKVVector3D(0.75, -1.0, 0.3);
    else if (name == "front")
        direction = CKVVector3D(0.0, -1.0, 0.15);
    else if (name == "back")
        direction = CKVVector3D(0.0, 1.0, 0.15);
    else if (name == "left")
        direction = CKVVector3D(-1.0, 0.0, 0.15);
    else if (name == "right")
        direction = CKVVector3D(1.0, 0.0, 0.15);
    else if (name == "top")
        direction = CKVVector3D(0.0, 0.0, 1.0);
    else
        return false;
    direction.normalize(1.0e-12);
    return true;
}

// The largest |x| or |y| of the box's corners on screen, in normalised
// device coordinates; infinite when a corner lies behind the eye.
double screenExtent(CKVCamera const& camera, CKVBndBox const& box)
{
    CKVMatrix3D const viewProjection = camera.getProjectMatrix() * camera.getViewMatrix();
    double extent = 0.0;
    for (unsigned int c = 0; c < 8; ++c) {
        CKVPoint3D const eyeSpace = camera.getViewMatrix().transformPoint(box.corner(c));
        if (eyeSpace.z >= -camera.getNear())
            return std::numeric_limits<double>::infinity();
        CKVPoint3D const p = viewProjection.transformPoint(box.corner(c));
        extent = std::max({extent, std::fabs(p.x), std::fabs(p.y)});
    }
    return extent;
}

} // namespace

void ViewCameraFraming::lookAt(CKVPoint3D const& eye, CKVPoint3D const& target, double aspect, double sceneRadius,
                               CKVCamera& camera)
{
    CKVVector3D const view = target - eye;
    // Looking straight down, z cannot be up: north (+y) is.
    CKVVector3D up(0.0, 0.0, 1.0);
    if (std::fabs(view.z) > 0.999 * view.length())
        up = CKVVector3D(0.0, 1.0, 0.0);
    camera.setProjectMode(CKVCamera::kPerspective);
    camera.setFieldOfView(kFieldOfView);
    camera.setAspect(aspect);
    // The backend fits near and far to the scene each frame; these only have
    // to hold the model.
    double const distance = view.length();
    camera.setNearFar(std::max(0.01, distance * 1.0e-3), distance + 4.0 * std::max(sceneRadius, 1.0));
    camera.setLookAt(eye, target, up);
}

bool ViewCameraFraming::frame(CKVBndBox const& box, std::string const& viewName, double aspect, CKVCamera& camera)
{
    CKVVector3D direction;
    if (!box.valid() || !directionOf(viewName, direction) || !(aspect > 0.0))
        return false;
    CKVPoint3D const centre = box.midPt();
    double const radius = std::max(0.5 * box.diagonal().length(), 0.01);
    // The sphere must fit the narrower of the two angles.
    double const halfVertical = 0.5 * kFieldOfView * kPi / 180.0;
    double const halfHorizontal = std::atan(std::tan(halfVertical) * aspect);
    double const sphereDistance = kMargin * radius / std::sin(std::min(halfVertical, halfHorizontal));
    lookAt(centre + direction * sphereDistance, centre, aspect, radius, camera);

    // The sphere leaves flat models (a house on its plot) small in the
    // picture. Move in until the box's corners fill it to the margin; the
    // screen extent shrinks about as 1/distance, so a few steps settle it.
    CKVCamera fitted = camera;
    double distance = sphereDistance;
    for (int step = 0; step < 6; ++step) {
        double const extent = screenExtent(fitted, box);
        // A corner behind the eye: the box is deep along the view, and the
        // sphere's distance is as close as it gets.
        if (!std::isfinite(extent) || extent <= 0.0)
            return true;
        distance *= extent * kMargin;
        lookAt(centre + direction * distance, centre, aspect, radius, fitted);
    }
    if (screenExtent(fitted, box) <= 1.0)
        camera = fitted;
    return true;
}

} // namespace Kelvor
