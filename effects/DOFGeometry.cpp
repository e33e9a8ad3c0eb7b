#include "effects/DOFGeometry.h"

#include "effects/DOFFocusBand.h"

#include <osg/GLExtensions>
#include <osg/State>

#include <algorithm>

namespace Kelvor {

namespace {

char const* const kShaderHeader = "#version 430 core\n";
char const* const kNearMaxHeader = "#version 430 core\n#define DOF_NEAR_MAX\n";

constexpr int kMaxAttachments = 3;
GLenum const kDrawBuffers[kMaxAttachments] = {GL_COLOR_ATTACHMENT0_EXT, GL_COLOR_ATTACHMENT1_EXT,
                                              GL_COLOR_ATTACHMENT2_EXT};

osg::ref_ptr<osg::Texture2D> makeTarget(GLint internalFormat, GLenum format, GLenum type, osg::Texture::FilterMode filter)
{
    osg::ref_ptr<osg::Texture2D> texture = new osg::Texture2D;
    texture->setInternalFormat(internalFormat);
    texture->setSourceFormat(format);
    texture->setSourceType(type);
    texture->setFilter(osg::Texture::MIN_FILTER, filter);
    texture->setFilter(osg::Texture::MAG_FILTER, filter);
    texture->setWrap(osg::Texture::WRAP_S, osg::Texture::CLAMP_TO_EDGE);
    texture->setWrap(osg::Texture::WRAP_T, osg::Texture::CLAMP_TO_EDGE);
    texture->setTextureSize(1, 1);
    return texture;
}

} // namespace

DOFGeometry::DOFGeometry(osg::Texture2D* depthTexture)
    : mDepthTexture(depthTexture)
    // Linear: the half-size step samples it between full-size pixels.
    , mCoCTexture(makeTarget(GL_RG8, GL_RG, GL_UNSIGNED_BYTE, osg::Texture::LINEAR))
    , mOutputTexture(makeTarget(GL_RGB, GL_RGB, GL_UNSIGNED_BYTE, osg::Texture::NEAREST))
{
    addTarget(mCoCTexture.get());
    addTarget(mOutputTexture.get());
    mHalfColorTexture = makeHalfTarget(GL_RGB16F_ARB, GL_RGB, GL_HALF_FLOAT);
    mMulCoCFarTexture = makeHalfTarget(GL_RGB16F_ARB, GL_RGB, GL_HALF_FLOAT);
    mHalfCoCTexture = makeHalfTarget(GL_RG8, GL_RG, GL_UNSIGNED_BYTE);
    for (int i = 0; i < 2; ++i)
    {
        mNearMaxTextures[i] = makeHalfTarget(GL_R8, GL_RED, GL_UNSIGNED_BYTE);
        mNearBlurTextures[i] = makeHalfTarget(GL_R8, GL_RED, GL_UNSIGNED_BYTE);
    }
    mNearFieldTexture = makeHalfTarget(GL_RGB16F_ARB, GL_RGB, GL_HALF_FLOAT);
    mFarFieldTexture = makeHalfTarget(GL_RGB16F_ARB, GL_RGB, GL_HALF_FLOAT);
    mNearFillTexture = makeHalfTarget(GL_RGB16F_ARB, GL_RGB, GL_HALF_FLOAT);
    mFarFillTexture = makeHalfTarget(GL_RGB16F_ARB, GL_RGB, GL_HALF_FLOAT);
}

DOFGeometry::~DOFGeometry() = default;

osg::ref_ptr<osg::Texture2D> DOFGeometry::makeHalfTarget(GLint internalFormat, GLenum format, GLenum type)
{
    osg::ref_ptr<osg::Texture2D> texture = makeTarget(internalFormat, format, type, osg::Texture::NEAREST);
    mHalfTargets.push_back(texture);
    return texture;
}

void DOFGeometry::setBlurSize(float value)
{
    if (value >= kMinKernelSize)
    {
        mKernelSize = value;
        mBlend = 1.0f;
    }
    else
    {
        mKernelSize = kMinKernelSize;
        mBlend = value / kMinKernelSize;
    }
}

void DOFGeometry::resize(int width, int height)
{
    if (width <= 0 || height <= 0)
        return;
    CKVFullScreenGeometry::resize(width, height);
    mHalfWidth = std::max(width / 2, 1);
    mHalfHeight = std::max(height / 2, 1);
    for (osg::ref_ptr<osg::Texture2D> const& target : mHalfTargets)
    {
        target->setTextureSize(mHalfWidth, mHalfHeight);
        target->dirtyTextureObject();
    }
}

void DOFGeometry::releaseGLObjects(osg::State* state) const
{
    for (osg::ref_ptr<osg::Texture2D> const& target : mHalfTargets)
        target->releaseGLObjects(state);
    CKVFullScreenGeometry::releaseGLObjects(state);
}

bool DOFGeometry::createGLObjects(osg::State& state) const
{
    osg::GLExtensions& gl = *state.get<osg::GLExtensions>();
    struct Source
    {
        char const* header;
        char const* name;
    };
    Source const sources[kProgramCount] = {
        {kShaderHeader, "dof_coc.frag"},        {kShaderHeader, "dof_downsample.frag"},
        {kNearMaxHeader, "dof_near_coc.frag"},  {kShaderHeader, "dof_near_coc.frag"},
        {kShaderHeader, "dof_fields.frag"},     {kShaderHeader, "dof_fill.frag"},
        {kShaderHeader, "dof_composite.frag"},
    };
    for (int i = 0; i < kProgramCount; ++i)
    {
        mPrograms[i] = buildFragmentProgram(gl, sources[i].header, sources[i].name);
        if (mPrograms[i] == 0)
        {
            deleteGLObjects(state);
            return false;
        }
    }
    gl.glGenFramebuffers(kStepCount, mFramebuffers);
    return true;
}

void DOFGeometry::attachTargets(osg::State& state) const
{
    osg::GLExtensions& gl = *state.get<osg::GLExtensions>();
    struct Targets
    {
        Step step;
        osg::Texture2D* textures[kMaxAttachments];
    };
    Targets const steps[kStepCount] = {
        {kCoCStep, {mCoCTexture.get()}},
        {kDownsampleStep, {mHalfColorTexture.get(), mMulCoCFarTexture.get(), mHalfCoCTexture.get()}},
        {kNearMaxAcrossStep, {mNearMaxTextures[0].get()}},
        {kNearMaxUpStep, {mNearMaxTextures[1].get()}},
        {kNearBlurAcrossStep, {mNearBlurTextures[0].get()}},
        {kNearBlurUpStep, {mNearBlurTextures[1].get()}},
        {kFieldsStep, {mNearFieldTexture.get(), mFarFieldTexture.get()}},
        {kFillStep, {mNearFillTexture.get(), mFarFillTexture.get()}},
        {kCompositeStep, {mOutputTexture.get()}},
    };
    for (Targets const& targets : steps)
    {
        gl.glBindFramebuffer(GL_FRAMEBUFFER_EXT, mFramebuffers[targets.step]);
        int count = 0;
        for (int i = 0; i < kMaxAttachments && targets.textures[i]; ++i, ++count)
            attachTexture(state, kDrawBuffers[i], targets.textures[i]);
        gl.glDrawBuffers(count, kDrawBuffers);
    }
}

GLint DOFGeometry::uniformLocation(osg::GLExtensions& gl, Program program, char const* name) const
{
    return gl.glGetUniformLocation(mPrograms[program], name);
}

void DOFGeometry::beginStep(osg::State& state, Step step, Program program) const
{
    state.get<osg::GLExtensions>()->glBindFramebuffer(GL_FRAMEBUFFER_EXT, mFramebuffers[step]);
    useProgram(state, mPrograms[program]);
}

void DOFGeometry::drawNearPass(osg::State& state, Step step, Program program, osg::Texture2D* source, float dx,
                               float dy) const
{
    osg::GLExtensions& gl = *state.get<osg::GLExtensions>();
    beginStep(state, step, program);
    gl.glUniform2f(uniformLocation(gl, program, "u_PixelSize"), 1.0f / mHalfWidth, 1.0f / mHalfHeight);
    gl.glUniform2f(uniformLocation(gl, program, "u_Direction"), dx, dy);
    bindTexture(state, 0, source);
    drawTriangle();
}

void DOFGeometry::drawSteps(osg::State& state) const
{
    if (!mDepthTexture.valid() || !mDepthTexture->getTextureObject(state.getContextID()))
        return;
    osg::GLExtensions& gl = *state.get<osg::GLExtensions>();
    double zNear = 1.0;
    double zFar = 1.0;
    depthRange(state, zNear, zFar);
    DOFFocusBand const band = DOFFocusBand::fromDepthRange(zNear, zFar, mNearEnd, mFarBegin);
    float const pixelWidth = 1.0f / mHalfWidth;
    float const pixelHeight = 1.0f / mHalfHeight;

    glViewport(0, 0, getWidth(), getHeight());
    beginStep(state, kCoCStep, kCoCProgram);
    gl.glUniform1f(uniformLocation(gl, kCoCProgram, "u_NearBegin"), band.nearBegin);
    gl.glUniform1f(uniformLocation(gl, kCoCProgram, "u_NearEnd"), band.nearEnd);
    gl.glUniform1f(uniformLocation(gl, kCoCProgram, "u_FarBegin"), band.farBegin);
    gl.glUniform1f(uniformLocation(gl, kCoCProgram, "u_FarEnd"), band.farEnd);
    gl.glUniform1f(uniformLocation(gl, kCoCProgram, "zNear"), static_cast<float>(zNear));
    gl.glUniform1f(uniformLocation(gl, kCoCProgram, "zFar"), static_cast<float>(zFar));
    bindTexture(state, 0, mDepthTexture.get());
    drawTriangle();

    glViewport(0, 0, mHalfWidth, mHalfHeight);
    beginStep(state, kDownsampleStep, kDownsampleProgram);
    gl.glUniform2f(uniformLocation(gl, kDownsampleProgram, "u_PixelSize"), pixelWidth, pixelHeight);
    bindTexture(state, 0, getInput());
    bindTexture(state, 1, mCoCTexture.get());
    drawTriangle();

    drawNearPass(state, kNearMaxAcrossStep, kNearMaxProgram, mHalfCoCTexture.get(), 1.0f, 0.0f);
    drawNearPass(state, kNearMaxUpStep, kNearMaxProgram, mNearMaxTextures[0].get(), 0.0f, 1.0f);
    drawNearPass(state, kNearBlurAcrossStep, kNearBlurProgram, mNearMaxTextures[1].get(), 1.0f, 0.0f);
    drawNearPass(state, kNearBlurUpStep, kNearBlurProgram, mNearBlurTextures[0].get(), 0.0f, 1.0f);

    beginStep(state, kFieldsStep, kFieldsProgram);
    gl.glUniform2f(uniformLocation(gl, kFieldsProgram, "u_PixelSize"), pixelWidth, pixelHeight);
    gl.glUniform1f(uniformLocation(gl, kFieldsProgram, "u_KernelSize"), mKernelSize);
    bindTexture(state, 0, mHalfColorTexture.get());
    bindTexture(state, 1, mMulCoCFarTexture.get());
    bindTexture(state, 2, mHalfCoCTexture.get());
    bindTexture(state, 3, mNearBlurTextures[1].get());
    drawTriangle();

    beginStep(state, kFillStep, kFillProgram);
    gl.glUniform2f(uniformLocation(gl, kFillProgram, "u_PixelSize"), pixelWidth, pixelHeight);
    bindTexture(state, 0, mNearFieldTexture.get());
    bindTexture(state, 1, mFarFieldTexture.get());
    bindTexture(state, 2, mHalfCoCTexture.get());
    bindTexture(state, 3, mNearBlurTextures[1].get());
    drawTriangle();

    glViewport(0, 0, getWidth(), getHeight());
    beginStep(state, kCompositeStep, kCompositeProgram);
    gl.glUniform1f(uniformLocation(gl, kCompositeProgram, "u_Blend"), mBlend);
    bindTexture(state, 0, getInput());
    bindTexture(state, 1, mCoCTexture.get());
    bindTexture(state, 2, mHalfCoCTexture.get());
    bindTexture(state, 3, mNearFillTexture.get());
    bindTexture(state, 4, mFarFillTexture.get());
    bindTexture(state, 5, mNearBlurTextures[1].get());
    drawTriangle();
}

void DOFGeometry::deleteGLObjects(osg::State& state) const
{
    osg::GLExtensions& gl = *state.get<osg::GLExtensions>();
    for (GLuint& program : mPrograms)
    {
        if (program != 0)
            gl.glDeleteProgram(program);
        program = 0;
    }
    for (GLuint& framebuffer : mFramebuffers)
    {
        if (framebuffer != 0)
            gl.glDeleteFramebuffers(1, &framebuffer);
        framebuffer = 0;
    }
}

} // namespace Kelvor
