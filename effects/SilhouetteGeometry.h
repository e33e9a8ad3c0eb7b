#pragma once

#include "effects/CKVFullScreenGeometry.h"

#include <osg/Vec3f>
#include <osg/Vec4f>

namespace Kelvor {

// The two steps of the edge effect. The edge step compares each pixel's
// neighbours in the scene's normal and depth targets and writes 1 where
// they agree, 1 - edge alpha where they do not; the composite step
// smooths that map along its lines and lays the edge colour over the
// scene colour (or over a plain background in edge-only mode).
class SilhouetteGeometry : public CKVFullScreenGeometry
{
public:
    // The scene's view normals and depth, read by the edge step.
    SilhouetteGeometry(osg::Texture2D* normalTexture, osg::Texture2D* depthTexture);

    char const* className() const override { return "SilhouetteGeometry"; }

    osg::Texture2D* getOutput() const override { return mResultTexture.get(); }
    osg::Texture2D* getEdgeTexture() const { return mEdgeTexture.get(); }

    // Alpha is the strength of an edge: 0 draws none, 1 the full colour.
    void setEdgeColor(osg::Vec4f const& color) { mEdgeColor = color; }
    osg::Vec4f const& getEdgeColor() const { return mEdgeColor; }
    void setEdgeOnly(bool edgeOnly) { mEdgeOnly = edgeOnly; }
    bool getEdgeOnly() const { return mEdgeOnly; }
    // What stands behind the edges in edge-only mode.
    void setBackgroundColor(osg::Vec3f const& color) { mBackgroundColor = color; }
    osg::Vec3f const& getBackgroundColor() const { return mBackgroundColor; }

protected:
    ~SilhouetteGeometry() override;

    bool createGLObjects(osg::State& state) const override;
    void attachTargets(osg::State& state) const override;
    void drawSteps(osg::State& state) const override;
    void deleteGLObjects(osg::State& state) const override;

private:
    enum Step { kEdgeStep, kCompositeStep, kStepCount };

    osg::ref_ptr<osg::Texture2D> mNormalTexture;
    osg::ref_ptr<osg::Texture2D> mDepthTexture;
    osg::ref_ptr<osg::Texture2D> mEdgeTexture;
    osg::ref_ptr<osg::Texture2D> mResultTexture;
    osg::Vec4f mEdgeColor;
    osg::Vec3f mBackgroundColor;
    bool mEdgeOnly = false;

    mutable GLuint mFramebuffers[kStepCount] = {0, 0};
    mutable GLuint mPrograms[kStepCount] = {0, 0};
    mutable GLint mNearFarLocation = -1;
    mutable GLint mEdgeColorLocations[kStepCount] = {-1, -1};
    mutable GLint mEdgeOnlyLocation = -1;
    mutable GLint mBackgroundColorLocation = -1;
};

} // namespace Kelvor
