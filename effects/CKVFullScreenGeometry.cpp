#include "effects/CKVFullScreenGeometry.h"

#include "programs/KVShaderSource.h"

#include <osg/GLExtensions>
#include <osg/Notify>
#include <osg/State>

namespace Kelvor {

namespace {

GLuint compileShader(osg::GLExtensions& gl, GLenum type, std::string const& source)
{
    GLuint const shader = gl.glCreateShader(type);
    char const* text = source.c_str();
    gl.glShaderSource(shader, 1, &text, nullptr);
    gl.glCompileShader(shader);
    GLint compiled = GL_FALSE;
    gl.glGetShaderiv(shader, GL_COMPILE_STATUS, &compiled);
    if (compiled == GL_TRUE)
        return shader;
    char log[1024] = {0};
    gl.glGetShaderInfoLog(shader, sizeof(log) - 1, nullptr, log);
    OSG_WARN << "Full-screen effect shader failed to compile:\n" << log << std::endl;
    gl.glDeleteShader(shader);
    return 0;
}

} // namespace

CKVFullScreenGeometry::CKVFullScreenGeometry()
{
    setUseDisplayList(false);
    setUseVertexBufferObjects(true);
    setUseVertexArrayObject(true);
}

CKVFullScreenGeometry::~CKVFullScreenGeometry() = default;

void CKVFullScreenGeometry::setInput(osg::Texture2D* texture)
{
    if (mInput.get() == texture)
        return;
    mInput = texture;
    mTexturesChanged = true;
}

void CKVFullScreenGeometry::addTarget(osg::Texture2D* texture)
{
    if (!texture)
        return;
    texture->setTextureSize(mWidth, mHeight);
    mTargets.push_back(texture);
}

void CKVFullScreenGeometry::resize(int width, int height)
{
    if (width <= 0 || height <= 0)
        return;
    mWidth = width;
    mHeight = height;
    for (osg::ref_ptr<osg::Texture2D> const& target : mTargets)
    {
        target->setTextureSize(width, height);
        target->dirtyTextureObject();
    }
    mTexturesChanged = true;
}

void CKVFullScreenGeometry::drawImplementation(osg::RenderInfo& renderInfo) const
{
    osg::State& state = *renderInfo.getState();
    if (!mInput.valid() || !mInput->getTextureObject(state.getContextID()))
        return;
    osg::GLExtensions* gl = state.get<osg::GLExtensions>();
    if (!gl || !gl->isFrameBufferObjectSupported)
        return;

    if (!mCreated)
    {
        if (!createGLObjects(state))
            return;
        mCreated = true;
        mTexturesChanged = true;
    }
    if (mTexturesChanged)
    {
        attachTargets(state);
        mTexturesChanged = false;
    }
    // Arrays a previous drawable left enabled would still be fetched for
    // our three vertices.
    state.lazyDisablingOfVertexAttributes();
    state.applyDisablingOfVertexAttributes();
    drawSteps(state);

    gl->glBindFramebuffer(GL_FRAMEBUFFER_EXT, 0);
    // Our steps set their own viewports and programs; OSG must apply its
    // own again for whatever comes next.
    state.haveAppliedAttribute(osg::StateAttribute::VIEWPORT);
    useProgram(state, 0);
}

void CKVFullScreenGeometry::releaseGLObjects(osg::State* state) const
{
    CBGGeometry::releaseGLObjects(state);
    for (osg::ref_ptr<osg::Texture2D> const& target : mTargets)
        target->releaseGLObjects(state);
    if (state && mCreated)
        deleteGLObjects(*state);
    mCreated = false;
    mTexturesChanged = true;
}

std::string CKVFullScreenGeometry::triangleVertexSource()
{
    char const* body = KVShaderSource::get("postprocess.vert");
    return std::string("#version 420 core\n") + (body ? body : "");
}

GLuint CKVFullScreenGeometry::buildProgram(osg::GLExtensions& gl, std::string const& vertex,
                                           std::string const& fragment)
{
    GLuint const vs = compileShader(gl, GL_VERTEX_SHADER, vertex);
    GLuint const fs = compileShader(gl, GL_FRAGMENT_SHADER, fragment);
    if (vs == 0 || fs == 0)
    {
        if (vs != 0)
            gl.glDeleteShader(vs);
        if (fs != 0)
            gl.glDeleteShader(fs);
        return 0;
    }
    GLuint const program = gl.glCreateProgram();
    gl.glAttachShader(program, vs);
    gl.glAttachShader(program, fs);
    gl.glLinkProgram(program);
    // The program keeps what it needs; the shaders go with it.
    gl.glDeleteShader(vs);
    gl.glDeleteShader(fs);
    GLint linked = GL_FALSE;
    gl.glGetProgramiv(program, GL_LINK_STATUS, &linked);
    if (linked == GL_TRUE)
        return program;
    char log[1024] = {0};
    gl.glGetProgramInfoLog(program, sizeof(log) - 1, nullptr, log);
    OSG_WARN << "Full-screen effect program failed to link:\n" << log << std::endl;
    gl.glDeleteProgram(program);
    return 0;
}

void CKVFullScreenGeometry::useProgram(osg::State& state, GLuint program)
{
    state.get<osg::GLExtensions>()->glUseProgram(program);
    state.setLastAppliedProgramObject(nullptr);
    // Marks the program slot as changed, so OSG binds its own next time.
    state.haveAppliedAttribute(osg::StateAttribute::PROGRAM);
}

void CKVFullScreenGeometry::bindTexture(osg::State& state, unsigned int unit, osg::Texture* texture)
{
    if (!texture)
        return;
    state.setActiveTextureUnit(unit);
    texture->apply(state);
    state.haveAppliedTextureAttribute(unit, texture);
}

void CKVFullScreenGeometry::attachTexture(osg::State& state, GLenum attachment, osg::Texture* texture)
{
    if (!texture)
        return;
    osg::Texture::TextureObject* object = texture->getTextureObject(state.getContextID());
    if (!object)
    {
        // Allocates the storage at the texture's size.
        bindTexture(state, 0, texture);
        object = texture->getTextureObject(state.getContextID());
    }
    if (object)
        state.get<osg::GLExtensions>()->glFramebufferTexture2D(GL_FRAMEBUFFER_EXT, attachment, GL_TEXTURE_2D,
                                                                object->id(), 0);
}

void CKVFullScreenGeometry::drawTriangle()
{
    glDrawArrays(GL_TRIANGLES, 0, 3);
}

bool CKVFullScreenGeometry::depthRange(osg::State const& state, double& zNear, double& zFar)
{
    osg::Matrixd const& projection = state.getProjectionMatrix();
    double fovy = 0.0;
    double aspect = 0.0;
    if (projection.getPerspective(fovy, aspect, zNear, zFar))
        return true;
    double left = 0.0;
    double right = 0.0;
    double bottom = 0.0;
    double top = 0.0;
    return projection.getOrtho(left, right, bottom, top, zNear, zFar);
}

GLuint CKVFullScreenGeometry::buildFragmentProgram(osg::GLExtensions& gl, char const* header, char const* name)
{
    char const* body = KVShaderSource::get(name);
    if (!body)
    {
        OSG_WARN << "Full-screen effect shader " << name << " is not built in" << std::endl;
        return 0;
    }
    return buildProgram(gl, triangleVertexSource(), std::string(header) + body);
}

} // namespace Kelvor
