#include "environment/IBLGeometry.h"

#include "environment/CKVSkyCubeFaces.h"
#include "programs/CKVProgramKinds.h"
#include "programs/CKVRenderStateManager.h"
#include "programs/KVShaderSource.h"

#include <osg/FrameBufferObject>
#include <osg/GLExtensions>
#include <osg/State>

#include <algorithm>

namespace Kelvor {

namespace {

// A unit no state set of the system uses: textures are made resident there
// when they need storage, so that the units the sky program reads keep
// their bindings.
constexpr unsigned int kScratchUnit = 12;
// The convolutions read the sky cube here ("environmentMap", binding 0).
constexpr unsigned int kSourceUnit = 0;
// Prefilter levels step the roughness evenly from 0 to 1.
constexpr float kRoughnessStep = 0.25f;

osg::ref_ptr<osg::Program> createConvolutionProgram(char const* fragment)
{
    osg::ref_ptr<osg::Program> program = new osg::Program;
    program->setName(fragment);
    struct Stage
    {
        osg::Shader::Type type;
        char const* source;
    };
    Stage const stages[] = {{osg::Shader::VERTEX, "sky_cube.vert"},
                            {osg::Shader::GEOMETRY, "sky_cube.geom"},
                            {osg::Shader::FRAGMENT, fragment}};
    for (Stage const& stage : stages) {
        char const* text = KVShaderSource::get(stage.source);
        if (!text)
            return nullptr;
        program->addShader(new osg::Shader(stage.type, std::string(CKVProgramKinds::kPrefixV) + text));
    }
    return program;
}

} // namespace

IBLGeometry::IBLGeometry(osg::TextureCubeMap* environment, osg::TextureCubeMap* irradiance,
                         osg::TextureCubeMap* prefilter)
    : mViewProjection(CKVSkyCubeFaces::createUniform())
    , mEnvironment(environment)
    , mIrradiance(irradiance)
    , mPrefilter(prefilter)
{
    setUseDisplayList(false);
    setUseVertexBufferObjects(true);
    setUseVertexArrayObject(true);
    setCullingActive(false);
    setVertexArray(createCubeCorners().get());
    addPrimitiveSet(createCubeTriangles().get());
}

IBLGeometry::~IBLGeometry() = default;

osg::ref_ptr<osg::Vec3Array> IBLGeometry::createCubeCorners()
{
    osg::ref_ptr<osg::Vec3Array> corners = new osg::Vec3Array;
    for (int i = 0; i < 8; ++i)
        corners->push_back(osg::Vec3((i & 1) ? 1.0f : -1.0f, (i & 2) ? 1.0f : -1.0f, (i & 4) ? 1.0f : -1.0f));
    return corners;
}

osg::ref_ptr<osg::DrawElementsUShort> IBLGeometry::createCubeTriangles()
{
    static unsigned short const kIndices[] = {0, 1, 2, 1, 2, 3, 3, 1, 7, 1, 7, 5, 7, 5, 6, 5, 6, 4,
                                              6, 4, 2, 4, 2, 0, 0, 1, 4, 1, 4, 5, 2, 3, 6, 3, 6, 7};
    return new osg::DrawElementsUShort(GL_TRIANGLES, std::size(kIndices), kIndices);
}

bool IBLGeometry::advanceSchedule(int& frameCounter, bool physical)
{
    bool const run = physical && frameCounter == 0;
    if (physical && frameCounter != 0)
        frameCounter = -1;
    ++frameCounter;
    return run;
}

void IBLGeometry::initialize(osg::State& state) const
{
    osg::GLExtensions* ext = state.get<osg::GLExtensions>();
    ext->glGenFramebuffers(1, &mFramebuffer);
    mFramebufferContext = state.getContextID();
    mIrradianceProgram = createConvolutionProgram("ibl_irradiance.frag");
    mPrefilterProgram = createConvolutionProgram("ibl_prefilter.frag");
}

void IBLGeometry::attachLayered(osg::State& state, osg::TextureCubeMap& map, unsigned int level) const
{
    unsigned int const contextID = state.getContextID();
    if (!map.getTextureObject(contextID))
        state.applyTextureAttribute(kScratchUnit, &map);
    osg::Texture::TextureObject* object = map.getTextureObject(contextID);
    if (!object)
        return;
    state.get<osg::GLExtensions>()->glFramebufferTexture(GL_FRAMEBUFFER_EXT, GL_COLOR_ATTACHMENT0_EXT, object->id(),
                                                         static_cast<GLint>(level));
}

void IBLGeometry::drawCube(osg::RenderInfo& renderInfo) const
{
    osg::Geometry::drawImplementation(renderInfo);
}

void IBLGeometry::useProgram(osg::State& state, osg::Program& program) const
{
    state.applyAttribute(&program);
    setMatrices(state, program);
}

void IBLGeometry::setMatrices(osg::State& state, osg::Program& program) const
{
    osg::Program::PerContextProgram* pcp = program.getPCP(state);
    if (!pcp)
        return;
    osg::GLExtensions* ext = state.get<osg::GLExtensions>();
    GLint const location = ext->glGetUniformLocation(pcp->getHandle(), "ViewProjectionMatrix");
    osg::FloatArray const* data = mViewProjection->getFloatArray();
    if (location >= 0 && data)
        ext->glUniformMatrix4fv(location, CKVSkyCubeFaces::kFaceCount, GL_FALSE, &data->front());
}

void IBLGeometry::runIrradiance(osg::RenderInfo& renderInfo) const
{
    osg::State& state = *renderInfo.getState();
    if (mIrradiance->getTextureWidth() == 0)
        mIrradiance->setTextureSize(kIrradianceSize, kIrradianceSize);
    attachLayered(state, *mIrradiance, 0);
    glViewport(0, 0, kIrradianceSize, kIrradianceSize);
    useProgram(state, *mIrradianceProgram);
    state.applyTextureAttribute(kSourceUnit, mEnvironment.get());
    drawCube(renderInfo);
}

void IBLGeometry::runPrefilter(osg::RenderInfo& renderInfo) const
{
    osg::State& state = *renderInfo.getState();
    osg::GLExtensions* ext = state.get<osg::GLExtensions>();
    if (!mPrefilterAllocated) {
        mPrefilter->setFilter(osg::Texture::MIN_FILTER, osg::Texture::LINEAR_MIPMAP_LINEAR);
        mPrefilter->setTextureSize(kPrefilterSize, kPrefilterSize);
        // Storage for the levels the passes write, and no more, so that the
        // map is complete for its mipmapped filter. Where OpenSceneGraph
        // makes immutable storage it makes them all; otherwise they are
        // added here.
        mPrefilter->setNumMipmapLevels(kPrefilterLevels);
        state.applyTextureAttribute(kScratchUnit, mPrefilter.get());
        GLint lastWidth = 0;
        glGetTexLevelParameteriv(GL_TEXTURE_CUBE_MAP_POSITIVE_X, kPrefilterLevels - 1, GL_TEXTURE_WIDTH, &lastWidth);
        if (lastWidth == 0) {
            for (int level = 1; level < kPrefilterLevels; ++level) {
                int const size = std::max(kPrefilterSize >> level, 1);
                for (GLenum face = 0; face < 6; ++face)
                    glTexImage2D(GL_TEXTURE_CUBE_MAP_POSITIVE_X + face, level, GL_RGB, size, size, 0, GL_RGB,
                                 GL_UNSIGNED_BYTE, nullptr);
            }
            glTexParameteri(GL_TEXTURE_CUBE_MAP, GL_TEXTURE_MAX_LEVEL, kPrefilterLevels - 1);
        }
        mPrefilterAllocated = true;
    }
    useProgram(state, *mPrefilterProgram);
    // Wider samples read coarser levels of the sky cube.
    state.applyTextureAttribute(kSourceUnit, mEnvironment.get());
    ext->glGenerateMipmap(GL_TEXTURE_CUBE_MAP);

    osg::Program::PerContextProgram* pcp = mPrefilterProgram->getPCP(state);
    GLint const roughness = pcp ? ext->glGetUniformLocation(pcp->getHandle(), "roughness") : -1;
    for (int level = 0; level < kPrefilterLevels; ++level) {
        attachLayered(state, *mPrefilter, static_cast<unsigned int>(level));
        int const size = std::max(kPrefilterSize >> level, 1);
        glViewport(0, 0, size, size);
        if (roughness >= 0)
            ext->glUniform1f(roughness, static_cast<float>(level) * kRoughnessStep);
        drawCube(renderInfo);
    }
}

void IBLGeometry::drawImplementation(osg::RenderInfo& renderInfo) const
{
    osg::State& state = *renderInfo.getState();
    osg::GLExtensions* ext = state.get<osg::GLExtensions>();
    if (!ext || !ext->isFrameBufferObjectSupported)
        return;
    GLint previousFramebuffer = 0;
    glGetIntegerv(GL_FRAMEBUFFER_BINDING_EXT, &previousFramebuffer);
    GLint viewport[4] = {0, 0, 0, 0};
    glGetIntegerv(GL_VIEWPORT, viewport);

    if (!mInitialized)
        initialize(state);
    ext->glBindFramebuffer(GL_FRAMEBUFFER_EXT, mFramebuffer);
    attachLayered(state, *mEnvironment, 0);
    drawCube(renderInfo);
    ++mSkyDraws;

    bool const physical = CKVRenderStateManager::instance().isPBRInUse();
    if (advanceSchedule(mFrameCounter, physical) && mIrradianceProgram.valid() && mPrefilterProgram.valid()) {
        runIrradiance(renderInfo);
        runPrefilter(renderInfo);
        ++mConvolutions;
        glViewport(viewport[0], viewport[1], viewport[2], viewport[3]);
        state.haveAppliedAttribute(osg::StateAttribute::VIEWPORT);
    }
    mInitialized = true;
    ext->glBindFramebuffer(GL_FRAMEBUFFER_EXT, static_cast<GLuint>(previousFramebuffer));
}

void IBLGeometry::releaseGLObjects(osg::State* state) const
{
    CBGGeometry::releaseGLObjects(state);
    if (mIrradianceProgram.valid())
        mIrradianceProgram->releaseGLObjects(state);
    if (mPrefilterProgram.valid())
        mPrefilterProgram->releaseGLObjects(state);
    if (mFramebuffer != 0 && state && state->getContextID() == mFramebufferContext) {
        if (osg::GLExtensions* ext = state->get<osg::GLExtensions>())
            ext->glDeleteFramebuffers(1, &mFramebuffer);
        mFramebuffer = 0;
        mInitialized = false;
    }
}

} // namespace Kelvor
