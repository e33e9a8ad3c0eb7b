#include "effects/HiZGeometry.h"

#include "programs/CKVRenderStateManager.h"
#include "programs/KVShaderSource.h"
#include "viewer/DepthFunc.h"
#include "viewer/DepthMask.h"

#include <osg/ContextData>
#include <osg/FrameBufferObject>
#include <osg/GLExtensions>
#include <osg/GraphicsContext>
#include <osg/Notify>
#include <osg/State>

#include <algorithm>
#include <string>

namespace Kelvor {

namespace {

constexpr GLsizei kTriangleVertices = 3;
// The usual depth size of a window.
constexpr GLint kWindowDepthBits = 24;
char const* const kVersion = "#version 420 core\n";

osg::ref_ptr<osg::Shader> shader(osg::Shader::Type type, char const* name)
{
    char const* body = KVShaderSource::get(name);
    if (!body)
        return nullptr;
    osg::ref_ptr<osg::Shader> made = new osg::Shader(type, std::string(kVersion) + body);
    made->setName(name);
    return made;
}

} // namespace

HiZGeometry::HiZGeometry(osg::Texture2D* texture, osg::Node* root)
    : mTexture(texture)
    , mProgram(createProgram())
    , mRoot(root)
{
    setUseDisplayList(false);
    setUseVertexBufferObjects(true);
    setUseVertexArrayObject(true);
}

HiZGeometry::~HiZGeometry()
{
    // Dropped outside the draw: the context deletes the framebuffer at its
    // next flush.
    if (mFramebufferCreated)
        osg::get<osg::GLFrameBufferObjectManager>(mContextID)->scheduleGLObjectForDeletion(mFramebuffer);
}

osg::ref_ptr<osg::Program> HiZGeometry::createProgram()
{
    osg::ref_ptr<osg::Program> program = new osg::Program;
    program->setName("HiZMip");
    for (osg::ref_ptr<osg::Shader> const& stage :
         {shader(osg::Shader::VERTEX, "postprocess.vert"), shader(osg::Shader::FRAGMENT, "hiz_mip.frag")})
    {
        if (stage.valid())
            program->addShader(stage.get());
    }
    return program;
}

unsigned int HiZGeometry::levelsFor(unsigned int width, unsigned int height)
{
    unsigned int side = std::max(std::max(width, height), 1u);
    unsigned int levels = 0;
    while (side > 1)
    {
        side >>= 1;
        ++levels;
    }
    return levels;
}

void HiZGeometry::setSize(unsigned int width, unsigned int height)
{
    mWidth = std::max(width, 1u);
    mHeight = std::max(height, 1u);
}

void HiZGeometry::matchWindowDepthFormat(osg::State& state) const
{
    // A blit from a multisampled window needs the window's exact depth
    // format; a copy converts, but the same format costs nothing there.
    using GetAttachment = void(GL_APIENTRY*)(GLenum, GLenum, GLenum, GLint*);
    auto const get = reinterpret_cast<GetAttachment>(osg::getGLExtensionFuncPtr("glGetFramebufferAttachmentParameteriv"));
    GLint depthBits = 0, stencilBits = 0, type = GL_UNSIGNED_NORMALIZED;
    state.get<osg::GLExtensions>()->glBindFramebuffer(GL_FRAMEBUFFER_EXT, 0);
    if (get)
    {
        get(GL_FRAMEBUFFER_EXT, GL_DEPTH, GL_FRAMEBUFFER_ATTACHMENT_DEPTH_SIZE, &depthBits);
        get(GL_FRAMEBUFFER_EXT, GL_STENCIL, GL_FRAMEBUFFER_ATTACHMENT_STENCIL_SIZE, &stencilBits);
        get(GL_FRAMEBUFFER_EXT, GL_DEPTH, GL_FRAMEBUFFER_ATTACHMENT_COMPONENT_TYPE, &type);
    }
    struct Format
    {
        GLint internal;
        GLenum source;
        GLenum type;
    };
    bool const stencil = stencilBits > 0;
    Format format{GL_DEPTH_COMPONENT24, GL_DEPTH_COMPONENT, GL_UNSIGNED_INT};
    if (type == GL_FLOAT)
        format = stencil ? Format{GL_DEPTH32F_STENCIL8, GL_DEPTH_STENCIL_EXT, GL_FLOAT_32_UNSIGNED_INT_24_8_REV}
                         : Format{GL_DEPTH_COMPONENT32F, GL_DEPTH_COMPONENT, GL_FLOAT};
    else if (depthBits == kWindowDepthBits && stencil)
        format = Format{GL_DEPTH24_STENCIL8_EXT, GL_DEPTH_STENCIL_EXT, GL_UNSIGNED_INT_24_8_EXT};
    else if (depthBits > kWindowDepthBits)
        format = Format{GL_DEPTH_COMPONENT32, GL_DEPTH_COMPONENT, GL_UNSIGNED_INT};
    else if (depthBits > 0 && depthBits < kWindowDepthBits)
        format = Format{GL_DEPTH_COMPONENT16, GL_DEPTH_COMPONENT, GL_UNSIGNED_SHORT};
    mTexture->setInternalFormat(format.internal);
    mTexture->setSourceFormat(format.source);
    mTexture->setSourceType(format.type);
}

void HiZGeometry::allocateTexture(osg::State& state) const
{
    matchWindowDepthFormat(state);
    mLevelZeroChecked = false;
    unsigned int const levels = levelsFor(mWidth, mHeight);
    mTexture->setNumMipmapLevels(levels + 1);
    mTexture->allocateMipmapLevels();
    state.setActiveTextureUnit(0);
    mTexture->apply(state);
    state.haveAppliedTextureAttribute(0, mTexture.get());

    // Without immutable storage the texture may come with level 0 alone.
    GLint levelOneWidth = 0;
    if (levels > 0)
        glGetTexLevelParameteriv(GL_TEXTURE_2D, 1, GL_TEXTURE_WIDTH, &levelOneWidth);
    if (levels == 0 || levelOneWidth > 0)
        return;
    GLsizei w = static_cast<GLsizei>(mWidth);
    GLsizei h = static_cast<GLsizei>(mHeight);
    for (unsigned int level = 1; level <= levels; ++level)
    {
        w = std::max(w >> 1, 1);
        h = std::max(h >> 1, 1);
        glTexImage2D(GL_TEXTURE_2D, static_cast<GLint>(level), mTexture->getInternalFormat(), w, h, 0,
                     mTexture->getSourceFormat(), mTexture->getSourceType(), nullptr);
    }
}

void HiZGeometry::drawImplementation(osg::RenderInfo& renderInfo) const
{
    osg::State& state = *renderInfo.getState();
    osg::GLExtensions* gl = state.get<osg::GLExtensions>();
    if (!gl || !gl->isFrameBufferObjectSupported || !mTexture.valid() || !mProgram.valid())
        return;

    unsigned int const contextID = state.getContextID();
    if (!mTexture->getTextureObject(contextID))
        allocateTexture(state);
    osg::Texture::TextureObject* texture = mTexture->getTextureObject(contextID);
    if (!texture)
        return;
    if (!mFramebufferCreated)
    {
        gl->glGenFramebuffers(1, &mFramebuffer);
        mContextID = contextID;
        mFramebufferCreated = true;
        gl->glBindFramebuffer(GL_DRAW_FRAMEBUFFER_EXT, mFramebuffer);
        // Depth only.
        glDrawBuffer(GL_NONE);
    }

    // The blit ignores the depth test; the levels need it on, with writes,
    // to land their gl_FragDepth.
    GLboolean depthWrites = GL_TRUE;
    glGetBooleanv(GL_DEPTH_WRITEMASK, &depthWrites);
    glDepthMask(GL_TRUE);
    state.applyMode(GL_DEPTH_TEST, true);
    glDepthFunc(GL_ALWAYS);
    state.setActiveTextureUnit(0);
    gl->glBindFramebuffer(GL_DRAW_FRAMEBUFFER_EXT, mFramebuffer);
    gl->glFramebufferTexture2D(GL_DRAW_FRAMEBUFFER_EXT, GL_DEPTH_ATTACHMENT_EXT, GL_TEXTURE_2D, texture->id(), 0);
    gl->glBindFramebuffer(GL_READ_FRAMEBUFFER_EXT, 0);
    GLint w = static_cast<GLint>(mWidth);
    GLint h = static_cast<GLint>(mHeight);
    // A capture larger than the window draws the pre-pass partly outside
    // it, where the window holds nothing: that part reads as far away, so
    // nothing there counts as hidden.
    osg::GraphicsContext const* window = state.getGraphicsContext();
    if (window && window->getTraits() && (window->getTraits()->width < w || window->getTraits()->height < h))
    {
        glClearDepth(1.0);
        glClear(GL_DEPTH_BUFFER_BIT);
        w = std::min(w, window->getTraits()->width);
        h = std::min(h, window->getTraits()->height);
    }
    if (mLevelZeroFails)
    {
        // Nothing counts as hidden when the window's depth cannot be had.
        glClearDepth(1.0);
        glClear(GL_DEPTH_BUFFER_BIT);
    }
    else
    {
        if (!mLevelZeroChecked)
        {
            // Errors of others are not ours to judge the copy by.
            while (glGetError() != GL_NO_ERROR)
            {
            }
        }
        copyWindowDepth(state, w, h);
    }
    if (!mLevelZeroChecked)
    {
        // Once per texture: a driver that refuses the copy must not leave
        // an empty level 0, which would hide everything.
        mLevelZeroChecked = true;
        mLevelZeroFails = glGetError() != GL_NO_ERROR;
        if (mLevelZeroFails)
        {
            OSG_WARN << "HiZGeometry: the window's depth cannot be copied; occlusion tests keep everything" << std::endl;
            glClearDepth(1.0);
            glClear(GL_DEPTH_BUFFER_BIT);
        }
    }

    if (CKVRenderStateManager::instance().isOcclusionCulling())
        buildLevels(state, levelsFor(mWidth, mHeight));

    glDepthFunc(GL_LEQUAL);
    glDepthMask(depthWrites);
    gl->glBindFramebuffer(GL_FRAMEBUFFER_EXT, 0);
    // What was set here behind the state's back is sent again by the next
    // state set that wants it.
    state.haveAppliedAttribute(static_cast<osg::StateAttribute::Type>(DepthFunc::kType));
    state.haveAppliedAttribute(static_cast<osg::StateAttribute::Type>(DepthMask::kType));
    state.haveAppliedAttribute(osg::StateAttribute::VIEWPORT);
    ++mBuilds;
}

void HiZGeometry::copyWindowDepth(osg::State& state, GLint width, GLint height) const
{
    // A blit needs the window's exact depth format (often with stencil),
    // which the texture cannot know in advance; a copy converts. Only a
    // multisampled window, which a copy cannot read, takes the blit.
    osg::GraphicsContext const* window = state.getGraphicsContext();
    if (window && window->getTraits() && window->getTraits()->samples > 0)
    {
        state.get<osg::GLExtensions>()->glBlitFramebuffer(0, 0, width, height, 0, 0, width, height,
                                                          GL_DEPTH_BUFFER_BIT, GL_NEAREST);
        return;
    }
    mTexture->apply(state);
    state.haveAppliedTextureAttribute(0, mTexture.get());
    glCopyTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, 0, 0, width, height);
}

void HiZGeometry::buildLevels(osg::State& state, unsigned int levels) const
{
    osg::GLExtensions* gl = state.get<osg::GLExtensions>();
    GLuint const texture = mTexture->getTextureObject(state.getContextID())->id();
    // Arrays a previous drawable left enabled would still be fetched for our
    // three vertices.
    state.lazyDisablingOfVertexAttributes();
    state.applyDisablingOfVertexAttributes();
    state.applyAttribute(mProgram.get());
    mTexture->apply(state);
    state.haveAppliedTextureAttribute(0, mTexture.get());

    GLsizei w = static_cast<GLsizei>(mWidth);
    GLsizei h = static_cast<GLsizei>(mHeight);
    for (unsigned int level = 1; level <= levels; ++level)
    {
        w = std::max(w >> 1, 1);
        h = std::max(h >> 1, 1);
        // The level below is the only one the program can read; the one
        // drawn is the only one attached.
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_BASE_LEVEL, static_cast<GLint>(level - 1));
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAX_LEVEL, static_cast<GLint>(level - 1));
        gl->glFramebufferTexture2D(GL_DRAW_FRAMEBUFFER_EXT, GL_DEPTH_ATTACHMENT_EXT, GL_TEXTURE_2D, texture,
                                   static_cast<GLint>(level));
        glViewport(0, 0, w, h);
        glDrawArrays(GL_TRIANGLES, 0, kTriangleVertices);
    }
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_BASE_LEVEL, 0);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAX_LEVEL, static_cast<GLint>(levels));
}

void HiZGeometry::releaseGLObjects(osg::State* state) const
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
}

} // namespace Kelvor
