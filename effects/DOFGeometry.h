#pragma once

#include "effects/CKVFullScreenGeometry.h"

#include <vector>

namespace Kelvor {

// The steps of the depth of field. At full size each pixel gets its near
// and far circle of confusion; at half size the colour is taken down, the
// near circle is widened (maximum) and softened (mean) in two separable
// passes each, the near and far fields are blurred on rings and their holes
// filled; at full size the two fields are laid over the sharp input.
class DOFGeometry : public CKVFullScreenGeometry
{
public:
    static constexpr float kDefaultNearEnd = 0.4f;
    static constexpr float kDefaultFarBegin = 0.45f;
    // Smaller kernels would sample too densely to show; smaller blur sizes
    // fade the blur in at this kernel instead.
    static constexpr float kMinKernelSize = 0.25f;

    // The scene depth, read by the first step.
    explicit DOFGeometry(osg::Texture2D* depthTexture);

    char const* className() const override { return "DOFGeometry"; }

    osg::Texture2D* getOutput() const override { return mOutputTexture.get(); }
    osg::Texture2D* getCoCTexture() const { return mCoCTexture.get(); }
    osg::Texture2D* getDepthTexture() const { return mDepthTexture.get(); }

    // Fractions of the camera's depth range.
    void setNearEnd(float value) { mNearEnd = value; }
    void setFarBegin(float value) { mFarBegin = value; }
    void setBlurSize(float value);
    float getNearEnd() const { return mNearEnd; }
    float getFarBegin() const { return mFarBegin; }
    float getKernelSize() const { return mKernelSize; }
    float getBlend() const { return mBlend; }

    // Full size for the first and last steps, half (truncated, at least 1)
    // for the rest. A zero size is ignored.
    void resize(int width, int height) override;
    int getHalfWidth() const { return mHalfWidth; }
    int getHalfHeight() const { return mHalfHeight; }

    void releaseGLObjects(osg::State* state = nullptr) const override;

protected:
    ~DOFGeometry() override;

    bool createGLObjects(osg::State& state) const override;
    void attachTargets(osg::State& state) const override;
    void drawSteps(osg::State& state) const override;
    void deleteGLObjects(osg::State& state) const override;

private:
    enum Step
    {
        kCoCStep,
        kDownsampleStep,
        kNearMaxAcrossStep,
        kNearMaxUpStep,
        kNearBlurAcrossStep,
        kNearBlurUpStep,
        kFieldsStep,
        kFillStep,
        kCompositeStep,
        kStepCount
    };
    enum Program { kCoCProgram, kDownsampleProgram, kNearMaxProgram, kNearBlurProgram, kFieldsProgram,
                   kFillProgram, kCompositeProgram, kProgramCount };

    osg::ref_ptr<osg::Texture2D> makeHalfTarget(GLint internalFormat, GLenum format, GLenum type);
    // Binds the step's framebuffer and program; the location of each
    // uniform the step sets comes from uniformLocation.
    void beginStep(osg::State& state, Step step, Program program) const;
    GLint uniformLocation(osg::GLExtensions& gl, Program program, char const* name) const;
    void drawNearPass(osg::State& state, Step step, Program program, osg::Texture2D* source, float dx,
                      float dy) const;

    osg::ref_ptr<osg::Texture2D> mDepthTexture;
    osg::ref_ptr<osg::Texture2D> mCoCTexture;
    osg::ref_ptr<osg::Texture2D> mHalfColorTexture;
    osg::ref_ptr<osg::Texture2D> mMulCoCFarTexture;
    osg::ref_ptr<osg::Texture2D> mHalfCoCTexture;
    osg::ref_ptr<osg::Texture2D> mNearMaxTextures[2];
    osg::ref_ptr<osg::Texture2D> mNearBlurTextures[2];
    osg::ref_ptr<osg::Texture2D> mNearFieldTexture;
    osg::ref_ptr<osg::Texture2D> mFarFieldTexture;
    osg::ref_ptr<osg::Texture2D> mNearFillTexture;
    osg::ref_ptr<osg::Texture2D> mFarFillTexture;
    osg::ref_ptr<osg::Texture2D> mOutputTexture;
    std::vector<osg::ref_ptr<osg::Texture2D>> mHalfTargets;

    float mNearEnd = kDefaultNearEnd;
    float mFarBegin = kDefaultFarBegin;
    float mKernelSize = kMinKernelSize;
    float mBlend = 1.0f;
    int mHalfWidth = 1;
    int mHalfHeight = 1;

    mutable GLuint mFramebuffers[kStepCount] = {};
    mutable GLuint mPrograms[kProgramCount] = {};
};

} // namespace Kelvor
