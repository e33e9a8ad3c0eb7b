#include "effects/KawaseBlurGeometry.h"

#include "programs/KVShaderSource.h"

#include <osg/ContextData>
#include <osg/FrameBufferObject>
#include <osg/GLExtensions>
#include <osg/State>

#include <algorithm>

namespace Kelvor {

namespace {

// The filter's iteration at each step. Only level 0 is used: its even list
// ends in the source texture. The odd lists of levels 1 and 3 leave their
// result in the partner texture.
float const kIterations0[] = {0.0f, 0.0f};
float const kIterations1[] = {0.0f, 1.0f, 1.0f};
float const kIterations2[] = {0.0f, 1.0f, 1.0f, 2.0f};
float const kIterations3[] = {0.0f, 1.0f, 2.0f, 2.0f, 3.0f};

// Where the filter's one uniform lives (fixed in the fragment source).
constexpr GLint kPixelSizeIterationLocation = 0;
constexpr GLsizei kTriangleVertices = 3;

osg::ref_ptr<osg::Shader> shader(osg::Shader::Type type, char const* version, char const* name)
{
    char const* body = KVShaderSource::get(name);
    if (!body)
        return nullptr;
    osg::ref_ptr<osg::Shader> made = new osg::Shader(type, std::string(version) + body);
    made->setName(name);
    return made;
}

} // namespace

KawaseBlurGeometry::KawaseBlurGeometry(osg::Texture2DArray* source, osg::Texture2DArray* target)
    : mSourceTexture(source)
    , mTargetTexture(target)
    , mProgram(createProgram())
{
    setUseDisplayList(false);
    setUseVertexBufferObjects(true);
    setUseVertexArrayObject(true);
}

KawaseBlurGeometry::~KawaseBlurGeometry()
{
    // Dropped while shadows go off, outside the draw: the context deletes
    // the framebuffer at its next flush.
    if (mFramebufferCreated)
        osg::get<osg::GLFrameBufferObjectManager>(mContextID)->scheduleGLObjectForDeletion(mFramebuffer);
}

osg::ref_ptr<osg::Program> KawaseBlurGeometry::createProgram()
{
    osg::ref_ptr<osg::Program> program = new osg::Program;
    program->setName("KawaseBlur");
    osg::ref_ptr<osg::Shader> const stages[] = {
        shader(osg::Shader::VERTEX, "#version 420 core\n", "postprocess.vert"),
        shader(osg::Shader::GEOMETRY, "#version 420 core\n", "kawase_blur.geom"),
        // Explicit uniform locations and gl_Layer in the fragment stage.
        shader(osg::Shader::FRAGMENT, "#version 440 core\n", "kawase_blur.frag"),
    };
    for (osg::ref_ptr<osg::Shader> const& stage : stages)
    {
        if (stage.valid())
            program->addShader(stage.get());
    }
    return program;
}

void KawaseBlurGeometry::setSize(unsigned int width, unsigned int height, unsigned int layers)
{
    mWidth = std::max(width, 1u);
    mHeight = std::max(height, 1u);
    mLayers = std::max(layers, 1u);
    mTexturesChanged = true;
}

void KawaseBlurGeometry::setBlurLevel(int level)
{
    mBlurLevel = std::min(std::max(level, 0), kMaxBlurLevel);
}

unsigned int KawaseBlurGeometry::iterations(int level, float const** list)
{
    switch (level)
    {
    case 1:
        *list = kIterations1;
        return sizeof(kIterations1) / sizeof(float);
    case 2:
        *list = kIterations2;
        return sizeof(kIterations2) / sizeof(float);
    case 3:
        *list = kIterations3;
        return sizeof(kIterations3) / sizeof(float);
    default:
        *list = kIterations0;
        return sizeof(kIterations0) / sizeof(float);
    }
}

void KawaseBlurGeometry::attachTextures(osg::State& state) const
{
    osg::GLExtensions* gl = state.get<osg::GLExtensions>();
    unsigned int const contextID = state.getContextID();
    osg::Texture2DArray* const textures[] = {mTargetTexture.get(), mSourceTexture.get()};
    GLenum const attachments[] = {GL_COLOR_ATTACHMENT0_EXT, GL_COLOR_ATTACHMENT1_EXT};
    gl->glBindFramebuffer(GL_FRAMEBUFFER_EXT, mFramebuffer);
    for (int i = 0; i < 2; ++i)
    {
        if (!textures[i])
            continue;
        osg::Texture::TextureObject* object = textures[i]->getTextureObject(contextID);
        if (!object)
        {
            // Allocates the storage at the texture's size.
            state.setActiveTextureUnit(0);
            textures[i]->apply(state);
            state.haveAppliedTextureAttribute(0, textures[i]);
            object = textures[i]->getTextureObject(contextID);
        }
        // Layered: the geometry stage picks the layer.
        if (object)
            gl->glFramebufferTexture(GL_FRAMEBUFFER_EXT, attachments[i], object->id(), 0);
    }
}

void KawaseBlurGeometry::drawImplementation(osg::RenderInfo& renderInfo) const
{
    osg::State& state = *renderInfo.getState();
    osg::GLExtensions* gl = state.get<osg::GLExtensions>();
    if (!gl || !gl->isFrameBufferObjectSupported || !mSourceTexture.valid() || !mTargetTexture.valid() ||
        !mProgram.valid())
        return;

    if (!mFramebufferCreated)
    {
        gl->glGenFramebuffers(1, &mFramebuffer);
        mContextID = state.getContextID();
        mFramebufferCreated = true;
        mTexturesChanged = true;
    }
    if (mTexturesChanged)
    {
        attachTextures(state);
        mTexturesChanged = false;
    }
    gl->glBindFramebuffer(GL_FRAMEBUFFER_EXT, mFramebuffer);

    // Arrays a previous drawable left enabled would still be fetched for our
    // three vertices.
    state.lazyDisablingOfVertexAttributes();
    state.applyDisablingOfVertexAttributes();
    state.applyAttribute(mProgram.get());
    state.setActiveTextureUnit(0);

    float const* list = nullptr;
    unsigned int const count = iterations(mBlurLevel, &list);
    for (unsigned int i = 0; i < count; ++i)
    {
        gl->glUniform3f(kPixelSizeIterationLocation, 1.0f / static_cast<float>(mWidth),
                        1.0f / static_cast<float>(mHeight), list[i]);
        bool const even = i % 2 == 0;
        glDrawBuffer(even ? GL_COLOR_ATTACHMENT0_EXT : GL_COLOR_ATTACHMENT1_EXT);
        osg::Texture2DArray* source = even ? mSourceTexture.get() : mTargetTexture.get();
        source->apply(state);
        state.haveAppliedTextureAttribute(0, source);
        glDrawArrays(GL_TRIANGLES, 0, kTriangleVertices);
        ++mSteps;
    }

    gl->glBindFramebuffer(GL_FRAMEBUFFER_EXT, 0);
}

void KawaseBlurGeometry::releaseGLObjects(osg::State* state) const
{
    CBGGeometry::releaseGLObjects(state);
    if (mProgram.valid())
        mProgram->releaseGLObjects(state);
    if (state && mFramebufferCreated)
    {
        if (osg::GLExtensions* gl = state->get<osg::GLExtensions>())
            gl->glDeleteFramebuffers(1, &mFramebuffer);
        mFramebuffer = 0;
        mFramebufferCreated = false;
    }
    mTexturesChanged = true;
}

} // namespace Kelvor
