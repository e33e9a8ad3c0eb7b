#include "effects/CKVShadowCascades.h"

#include "TarnwickGeometry/KVMath.h"

#include <osg/Quat>
#include <osg/Vec4d>

#include <algorithm>
#include <cmath>
#include <utility>

namespace Kelvor {

namespace {

// Half uniform, half logarithmic: the practical split.
constexpr double kSplitWeight = 0.5;
constexpr int kCubeCorners = 8;

} // namespace

CKVShadowCascades::CKVShadowCascades()
    : mLightDirection(0.0, 0.0, -1.0)
    , mEnds{0.0f, 0.0f, 0.0f, 0.0f}
    , mClipSpaceEnds{0.0f, 0.0f, 0.0f}
{
}

osg::Matrixd CKVShadowCascades::getViewProjection(unsigned int index) const
{
    return mCascades[index].view * mCascades[index].projection;
}

bool CKVShadowCascades::update(osg::Matrixd const& projection, osg::Matrixd const& view,
                               osg::BoundingBox const& sceneBox, osg::Vec3d const& look)
{
    double fovy = 0.0;
    double aspect = 0.0;
    double zNear = 0.0;
    double zFar = 0.0;
    if (!projection.getPerspective(fovy, aspect, zNear, zFar))
        return false;
    if (sceneBox.valid())
        clampToBox(sceneBox, view, look, zNear, zFar);
    limitRange(zNear, zFar);
    splitDistances(zNear, zFar, mEnds);

    osg::Vec3d side;
    osg::Vec3d up;
    lightAxes(view, mLightDirection, side, up);
    for (unsigned int i = 0; i < kCascadeCount; ++i)
        mClipSpaceEnds[i] = clipSpaceDepth(projection, mEnds[i + 1]);
    mWhole = fit(fovy, aspect, zNear, zFar, view, mLightDirection, side, up);
    for (unsigned int i = 0; i < kCascadeCount; ++i)
        mCascades[i] = fit(fovy, aspect, mEnds[i], mEnds[i + 1], view, mLightDirection, side, up);
    return true;
}

void CKVShadowCascades::clampToBox(osg::BoundingBox const& box, osg::Matrixd const& view, osg::Vec3d const& look,
                                   double& zNear, double& zFar)
{
    osg::Vec3d facing;
    osg::Vec3d away;
    for (int axis = 0; axis < 3; ++axis)
    {
        bool const backwards = look[axis] < 0.0;
        facing[axis] = backwards ? box._max[axis] : box._min[axis];
        away[axis] = backwards ? box._min[axis] : box._max[axis];
    }
    double depth0 = -(facing * view).z();
    double depth1 = -(away * view).z();
    if (depth0 > depth1)
        std::swap(depth0, depth1);
    zNear = std::max(zNear, depth0);
    zFar = std::min(zFar, depth1);
}

void CKVShadowCascades::limitRange(double zNear, double& zFar)
{
    double const range = zFar - zNear;
    if (range > kMaxDepthRange || !Math::isNormal(range))
        zFar = zNear + kMaxDepthRange;
}

void CKVShadowCascades::splitDistances(double zNear, double zFar, float ends[kCascadeCount + 1])
{
    for (unsigned int i = 0; i < kCascadeCount; ++i)
    {
        double const part = static_cast<double>(i) / kCascadeCount;
        double const uniform = zNear + (zFar - zNear) * part;
        double const logarithmic = zNear * std::pow(zFar / zNear, part);
        ends[i] = static_cast<float>((1.0 - kSplitWeight) * uniform + kSplitWeight * logarithmic);
    }
    ends[0] = static_cast<float>(zNear);
    ends[kCascadeCount] = static_cast<float>(zFar);
}

float CKVShadowCascades::clipSpaceDepth(osg::Matrixd const& projection, double distance)
{
    osg::Vec4d const clip = osg::Vec4d(0.0, 0.0, -distance, 1.0) * projection;
    return static_cast<float>(clip.z() / clip.w() * 0.5 + 0.5);
}

void CKVShadowCascades::lightAxes(osg::Matrixd const& view, osg::Vec3d const& lightDirection, osg::Vec3d& side,
                                  osg::Vec3d& up)
{
    osg::Vec3d eye;
    osg::Vec3d centre;
    view.getLookAt(eye, centre, up, 1.0);
    osg::Vec3d forward = centre - eye;
    side = forward ^ up;
    forward.normalize();
    side.normalize();
    up.normalize();
    osg::Quat turn;
    turn.makeRotate(forward, lightDirection);
    side = turn * side;
    up = turn * up;
}

CKVShadowCascades::Frustum CKVShadowCascades::fit(double fovy, double aspect, double zNear, double zFar,
                                                  osg::Matrixd const& view, osg::Vec3d const& lightDirection,
                                                  osg::Vec3d const& side, osg::Vec3d const& up)
{
    osg::Matrixd const toWorld =
        osg::Matrixd::inverse(view * osg::Matrixd::perspective(fovy, aspect, zNear, zFar));
    osg::Vec3d corners[kCubeCorners];
    osg::Vec3d centre;
    for (int i = 0; i < kCubeCorners; ++i)
    {
        osg::Vec3d const unit((i & 1) ? 1.0 : -1.0, (i & 2) ? 1.0 : -1.0, (i & 4) ? 1.0 : -1.0);
        corners[i] = unit * toWorld;
        centre += corners[i];
    }
    centre /= kCubeCorners;

    double radius = 0.0;
    for (osg::Vec3d const& corner : corners)
        radius = std::max(radius, std::abs((corner - centre) * lightDirection));
    osg::Vec3d const eye = centre - lightDirection * radius;
    osg::Vec3d const target = centre + lightDirection * radius;

    double nearest = std::abs((corners[0] - eye) * lightDirection);
    double farthest = nearest;
    double left = (corners[0] - centre) * side;
    double right = left;
    double bottom = (corners[0] - centre) * up;
    double top = bottom;
    for (osg::Vec3d const& corner : corners)
    {
        double const along = std::abs((corner - eye) * lightDirection);
        nearest = std::min(nearest, along);
        farthest = std::max(farthest, along);
        double const across = (corner - centre) * side;
        left = std::min(left, across);
        right = std::max(right, across);
        double const upwards = (corner - centre) * up;
        bottom = std::min(bottom, upwards);
        top = std::max(top, upwards);
    }
    nearest = std::max(nearest, 0.0);

    Frustum frustum;
    frustum.view = osg::Matrixd::lookAt(eye, target, up);
    frustum.projection = osg::Matrixd::ortho(left, right, bottom, top, nearest, farthest);
    return frustum;
}

} // namespace Kelvor
