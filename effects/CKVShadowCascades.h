#pragma once

#include <osg/BoundingBox>
#include <osg/Matrixd>
#include <osg/Vec3d>

namespace Kelvor {

// The arithmetic of the shadow cascades, apart from any GL: where the
// camera's depth range is split, and the orthographic light frustum that
// covers each part of the camera's frustum.
//
// The range is first narrowed to the depths the scene really occupies, and
// split between a uniform and a logarithmic division (half of each), so
// that the near cascades, where texels are seen large, stay small. Each
// light frustum is fitted to the corners of its slice of the camera's
// frustum, looking along the light, without texel snapping.
class CKVShadowCascades
{
public:
    static constexpr unsigned int kCascadeCount = 3;
    // A deeper range is cut to this: with a far plane at the horizon the
    // near cascades would have no texels left for what is near.
    static constexpr double kMaxDepthRange = 2.0e6;

    struct Frustum
    {
        osg::Matrixd view;
        osg::Matrixd projection;
    };

    CKVShadowCascades();

    // The direction the light travels (the negated direction to the sun).
    void setLightDirection(osg::Vec3d const& direction) { mLightDirection = direction; }
    osg::Vec3d const& getLightDirection() const { return mLightDirection; }

    // Recomputes splits and frusta for the camera's `projection` and `view`.
    // `sceneBox`, when valid, narrows the range to its depths as seen along
    // `look` (the view direction in world space). False, with nothing
    // changed, for a projection that is not a perspective one.
    bool update(osg::Matrixd const& projection, osg::Matrixd const& view, osg::BoundingBox const& sceneBox,
                osg::Vec3d const& look);

    // View-space distances: end 0 is the near plane, end kCascadeCount the far.
    float getCascadeEnd(unsigned int index) const { return mEnds[index]; }
    // Window depth (0 to 1) of the far end of cascade `index`, as a fragment
    // of the camera sees it.
    float getClipSpaceEnd(unsigned int index) const { return mClipSpaceEnds[index]; }
    // The light frustum of the whole range, for culling the casters.
    Frustum const& getWholeRange() const { return mWhole; }
    Frustum const& getCascade(unsigned int index) const { return mCascades[index]; }
    osg::Matrixd getViewProjection(unsigned int index) const;

    // The steps, open for the tests.
    // Narrows [zNear, zFar] to the eye depths of the box's two corners that
    // face against and along `look`.
    static void clampToBox(osg::BoundingBox const& box, osg::Matrixd const& view, osg::Vec3d const& look,
                           double& zNear, double& zFar);
    // Cuts a range deeper than kMaxDepthRange, or not a normal number.
    static void limitRange(double zNear, double& zFar);
    static void splitDistances(double zNear, double zFar, float ends[kCascadeCount + 1]);
    static float clipSpaceDepth(osg::Matrixd const& projection, double distance);
    // The camera's side and up axes turned as its view direction would be
    // turned onto the light.
    static void lightAxes(osg::Matrixd const& view, osg::Vec3d const& lightDirection, osg::Vec3d& side,
                          osg::Vec3d& up);
    static Frustum fit(double fovy, double aspect, double zNear, double zFar, osg::Matrixd const& view,
                       osg::Vec3d const& lightDirection, osg::Vec3d const& side, osg::Vec3d const& up);

private:
    osg::Vec3d mLightDirection;
    float mEnds[kCascadeCount + 1];
    float mClipSpaceEnds[kCascadeCount];
    Frustum mWhole;
    Frustum mCascades[kCascadeCount];
};

} // namespace Kelvor
