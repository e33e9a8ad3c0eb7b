#pragma once

#include "environment/CBGGeometry.h"

#include <osg/GL>
#include <osg/Program>
#include <osg/Texture2D>
#include <osg/observer_ptr>
#include <osg/ref_ptr>

namespace Kelvor {

// Turns the window's depth, as the depth pre-pass left it, into the
// maximum-depth chain that the culling pass reads: a blit copies it into
// level 0 of the texture, and each further level is one screen triangle in
// a framebuffer of its own, every texel taking the farthest depth of the
// texels below it. Drawn in direct GL from the pre-pass camera's post-draw
// callback (HiZCallback), never from the scene graph.
class HiZGeometry : public CBGGeometry
{
public:
    // `texture` is the depth texture of the chain; `root` what the pre-pass
    // draws (kept for the owner's bookkeeping, not owned).
    HiZGeometry(osg::Texture2D* texture, osg::Node* root);

    char const* className() const override { return "HiZGeometry"; }

    // The window size; the texture is rebuilt at the next draw.
    void setSize(unsigned int width, unsigned int height);
    unsigned int getWidth() const { return mWidth; }
    unsigned int getHeight() const { return mHeight; }
    osg::Texture2D* getTexture() const { return mTexture.get(); }

    // Levels above 0 for a window of this size: floor(log2(max side)).
    static unsigned int levelsFor(unsigned int width, unsigned int height);

    void drawImplementation(osg::RenderInfo& renderInfo) const override;
    void releaseGLObjects(osg::State* state = nullptr) const override;

    // Chains built so far, for the tests.
    unsigned int getBuildCount() const { return mBuilds; }

protected:
    ~HiZGeometry() override;

private:
    // The texture takes the window's depth format where it has stencil too.
    void matchWindowDepthFormat(osg::State& state) const;
    // Creates the texture object with room for every level.
    void allocateTexture(osg::State& state) const;
    // Level 0 from the window's depth over (0, 0, width, height).
    void copyWindowDepth(osg::State& state, GLint width, GLint height) const;
    void buildLevels(osg::State& state, unsigned int levels) const;
    static osg::ref_ptr<osg::Program> createProgram();

    // Drawing is const in OSG; these record what the GL side has seen.
    mutable bool mFramebufferCreated = false;
    mutable bool mLevelZeroChecked = false;
    mutable bool mLevelZeroFails = false;
    osg::ref_ptr<osg::Texture2D> mTexture;
    osg::ref_ptr<osg::Program> mProgram;
    unsigned int mWidth = 1;
    unsigned int mHeight = 1;
    mutable GLuint mFramebuffer = 0;
    // The context that holds the framebuffer.
    mutable unsigned int mContextID = 0;
    osg::observer_ptr<osg::Node> mRoot;
    mutable unsigned int mBuilds = 0;
};

} // namespace Kelvor
