#include "effects/SilhouetteGeometry.h"

#include <osg/GLExtensions>
#include <osg/State>

namespace Kelvor {

namespace {

char const* const kShaderHeader = "#version 430 core\n";
// A soft grey that does not shout over the model's own colours.
osg::Vec4f const kDefaultEdgeColor(0.25f, 0.25f, 0.25f, 0.4f);
osg::Vec3f const kDefaultBackgroundColor(1.0f, 1.0f, 1.0f);

// Units fixed by the shaders' binding layouts.
constexpr unsigned int kNormalUnit = 0;
constexpr unsigned int kDepthUnit = 1;
constexpr unsigned int kColorUnit = 0;
constexpr unsigned int kEdgeUnit = 1;

osg::ref_ptr<osg::Texture2D> makeTarget()
{
    osg::ref_ptr<osg::Texture2D> texture = new osg::Texture2D;
    texture->setInternalFormat(GL_RGB);
    texture->setSourceFormat(GL_RGB);
    texture->setSourceType(GL_UNSIGNED_BYTE);
    texture->setFilter(osg::Texture::MIN_FILTER, osg::Texture::NEAREST);
    texture->setFilter(osg::Texture::MAG_FILTER, osg::Texture::NEAREST);
    texture->setWrap(osg::Texture::WRAP_S, osg::Texture::CLAMP_TO_EDGE);
    texture->setWrap(osg::Texture::WRAP_T, osg::Texture::CLAMP_TO_EDGE);
    return texture;
}

} // namespace

SilhouetteGeometry::SilhouetteGeometry(osg::Texture2D* normalTexture, osg::Texture2D* depthTexture)
    : mNormalTexture(normalTexture)
    , mDepthTexture(depthTexture)
    , mEdgeTexture(makeTarget())
    , mResultTexture(makeTarget())
    , mEdgeColor(kDefaultEdgeColor)
    , mBackgroundColor(kDefaultBackgroundColor)
{
    addTarget(mEdgeTexture.get());
    addTarget(mResultTexture.get());
}

SilhouetteGeometry::~SilhouetteGeometry() = default;

bool SilhouetteGeometry::createGLObjects(osg::State& state) const
{
    osg::GLExtensions& gl = *state.get<osg::GLExtensions>();
    mPrograms[kEdgeStep] = buildFragmentProgram(gl, kShaderHeader, "silhouette_edge.frag");
    mPrograms[kCompositeStep] = buildFragmentProgram(gl, kShaderHeader, "silhouette_composite.frag");
    if (mPrograms[kEdgeStep] == 0 || mPrograms[kCompositeStep] == 0)
    {
        deleteGLObjects(state);
        return false;
    }
    mNearFarLocation = gl.glGetUniformLocation(mPrograms[kEdgeStep], "nearFar");
    mEdgeColorLocations[kEdgeStep] = gl.glGetUniformLocation(mPrograms[kEdgeStep], "edgeColor");
    mEdgeColorLocations[kCompositeStep] = gl.glGetUniformLocation(mPrograms[kCompositeStep], "edgeColor");
    mEdgeOnlyLocation = gl.glGetUniformLocation(mPrograms[kCompositeStep], "edgeOnly");
    mBackgroundColorLocation = gl.glGetUniformLocation(mPrograms[kCompositeStep], "backgroundColor");
    gl.glGenFramebuffers(kStepCount, mFramebuffers);
    return true;
}

void SilhouetteGeometry::attachTargets(osg::State& state) const
{
    osg::GLExtensions& gl = *state.get<osg::GLExtensions>();
    osg::Texture2D* const targets[kStepCount] = {mEdgeTexture.get(), mResultTexture.get()};
    for (int step = 0; step < kStepCount; ++step)
    {
        gl.glBindFramebuffer(GL_FRAMEBUFFER_EXT, mFramebuffers[step]);
        attachTexture(state, GL_COLOR_ATTACHMENT0_EXT, targets[step]);
        glDrawBuffer(GL_COLOR_ATTACHMENT0_EXT);
    }
}

void SilhouetteGeometry::drawSteps(osg::State& state) const
{
    osg::GLExtensions& gl = *state.get<osg::GLExtensions>();
    double zNear = 1.0;
    double zFar = 1.0;
    depthRange(state, zNear, zFar);
    glViewport(0, 0, getWidth(), getHeight());

    gl.glBindFramebuffer(GL_FRAMEBUFFER_EXT, mFramebuffers[kEdgeStep]);
    useProgram(state, mPrograms[kEdgeStep]);
    gl.glUniform2f(mNearFarLocation, static_cast<float>(zNear), static_cast<float>(zFar));
    gl.glUniform4fv(mEdgeColorLocations[kEdgeStep], 1, mEdgeColor.ptr());
    bindTexture(state, kNormalUnit, mNormalTexture.get());
    bindTexture(state, kDepthUnit, mDepthTexture.get());
    drawTriangle();

    gl.glBindFramebuffer(GL_FRAMEBUFFER_EXT, mFramebuffers[kCompositeStep]);
    useProgram(state, mPrograms[kCompositeStep]);
    gl.glUniform1i(mEdgeOnlyLocation, mEdgeOnly ? 1 : 0);
    gl.glUniform4fv(mEdgeColorLocations[kCompositeStep], 1, mEdgeColor.ptr());
    gl.glUniform3fv(mBackgroundColorLocation, 1, mBackgroundColor.ptr());
    bindTexture(state, kColorUnit, getInput());
    bindTexture(state, kEdgeUnit, mEdgeTexture.get());
    drawTriangle();
}

void SilhouetteGeometry::deleteGLObjects(osg::State& state) const
{
    osg::GLExtensions& gl = *state.get<osg::GLExtensions>();
    for (int step = 0; step < kStepCount; ++step)
    {
        if (mPrograms[step] != 0)
            gl.glDeleteProgram(mPrograms[step]);
        if (mFramebuffers[step] != 0)
            gl.glDeleteFramebuffers(1, &mFramebuffers[step]);
        mPrograms[step] = 0;
        mFramebuffers[step] = 0;
    }
}

} // namespace Kelvor
