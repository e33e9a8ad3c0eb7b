#pragma once

#include "environment/CBGGeometry.h"

#include <osg/GL>
#include <osg/Program>
#include <osg/Texture2DArray>
#include <osg/ref_ptr>

namespace Kelvor {

// Blurs every layer of a layered texture with the Kawase filter, in direct
// GL inside drawImplementation: a framebuffer of its own holds the source
// and a partner texture of the same size, and each step draws the screen
// triangle once (a geometry stage repeats it on every layer) from one into
// the other. With an even number of steps the result ends where it started,
// in the source texture, which is what the readers of the source see.
class KawaseBlurGeometry : public CBGGeometry
{
public:
    // Steps of the filter: 0, the one in use, is the lightest (two steps);
    // 3 the widest.
    static constexpr int kMaxBlurLevel = 3;

    KawaseBlurGeometry(osg::Texture2DArray* source, osg::Texture2DArray* target);

    char const* className() const override { return "KawaseBlurGeometry"; }

    // The three-stage program of the filter. Its owner sets it on the pass
    // that draws this geometry; the steps set its one uniform themselves.
    osg::Program* getProgram() const { return mProgram.get(); }
    osg::Texture2DArray* getSourceTexture() const { return mSourceTexture.get(); }
    osg::Texture2DArray* getTargetTexture() const { return mTargetTexture.get(); }

    // The size of both textures; they are attached again at the next draw.
    void setSize(unsigned int width, unsigned int height, unsigned int layers);
    unsigned int getWidth() const { return mWidth; }
    unsigned int getHeight() const { return mHeight; }
    unsigned int getLayers() const { return mLayers; }

    void setBlurLevel(int level);
    int getBlurLevel() const { return mBlurLevel; }
    // The filter iteration of each step at the current level.
    static unsigned int iterations(int level, float const** list);

    void drawImplementation(osg::RenderInfo& renderInfo) const override;
    void releaseGLObjects(osg::State* state = nullptr) const override;

    // Steps drawn so far, for the tests.
    unsigned int getStepCount() const { return mSteps; }

protected:
    ~KawaseBlurGeometry() override;

private:
    void attachTextures(osg::State& state) const;
    static osg::ref_ptr<osg::Program> createProgram();

    // Drawing is const in OSG; these record what the GL side has seen.
    mutable bool mFramebufferCreated = false;
    mutable bool mTexturesChanged = true;
    osg::ref_ptr<osg::Texture2DArray> mSourceTexture;
    osg::ref_ptr<osg::Texture2DArray> mTargetTexture;
    osg::ref_ptr<osg::Program> mProgram;
    mutable GLuint mFramebuffer = 0;
    // The context that holds the framebuffer.
    mutable unsigned int mContextID = 0;
    unsigned int mWidth = 1;
    unsigned int mHeight = 1;
    unsigned int mLayers = 1;
    int mBlurLevel = 0;
    mutable unsigned int mSteps = 0;
};

} // namespace Kelvor
