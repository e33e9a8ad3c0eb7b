#include "environment/CAtmosphericModelGeometry.h"

#include "environment/CKVAtmosphericScatttering.h"
#include "environment/KVAtmosphereShaders.h"
#include "environment/KVAtmosphereTables.h"
#include "programs/KVShaderSource.h"

#include <TarnwickCommon/Common.h>

#include <osg/GLExtensions>
#include <osg/Notify>
#include <osg/State>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <memory>

namespace Kelvor {

namespace {

using T = KVAtmosphereTables;

char const* const kVersion = "#version 330 core\n";
// Integration samples of a reduced run: enough to exercise every pass.
char const* const kReducedSampling = "#define TRANSMITTANCE_SAMPLE_COUNT 8\n"
                                     "#define SINGLE_SCATTERING_SAMPLE_COUNT 4\n"
                                     "#define SCATTERING_DENSITY_SAMPLE_COUNT 2\n"
                                     "#define MULTIPLE_SCATTERING_SAMPLE_COUNT 4\n"
                                     "#define INDIRECT_IRRADIANCE_SAMPLE_COUNT 4\n";

constexpr int kFirstMultipleOrder = 2;
constexpr int kLastOrder = 4;
constexpr int kQuadVertices = 4;
constexpr int kDeltaIrradianceWidth = 64;
constexpr int kDeltaIrradianceHeight = 16;

typedef void(GL_APIENTRY* IndexedCapability)(GLenum, GLuint);

struct PassSource
{
    char const* main;
    bool layered;
};

PassSource const kPassSources[CAtmosphericModelGeometry::PassCount] = {
    {"atmosphere_transmittance.frag", false},     {"atmosphere_direct_irradiance.frag", false},
    {"atmosphere_single_scattering.frag", true},  {"atmosphere_scattering_density.frag", true},
    {"atmosphere_indirect_irradiance.frag", false}, {"atmosphere_multiple_scattering.frag", true},
};

std::string text(char const* name)
{
    char const* body = KVShaderSource::get(name);
    if (!body)
        OSG_WARN << "CAtmosphericModelGeometry: no shader text \"" << name << "\"" << std::endl;
    return body ? body : "";
}

} // namespace

// What every pass of one precomputation shares.
struct CAtmosphericModelGeometry::PassContext
{
    osg::State& state;
    osg::GLExtensions* gl;
    IndexedCapability enablei;
    IndexedCapability disablei;
    std::chrono::steady_clock::time_point start;
    Progress const& progress;

    void report(std::string const& step, int order) const
    {
        if (!progress)
            return;
        glFinish();
        progress(step, order, std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    }

    GLuint textureId(osg::Texture* texture) const
    {
        osg::Texture::TextureObject* object = texture->getTextureObject(state.getContextID());
        if (!object)
        {
            // Allocates the storage at the texture's size.
            state.setActiveTextureUnit(0);
            texture->apply(state);
            state.haveAppliedTextureAttribute(0, texture);
            object = texture->getTextureObject(state.getContextID());
        }
        return object ? object->id() : 0;
    }

    // Colour attachments 0..n-1 in order; 3D tables attach all layers.
    void targets(std::initializer_list<osg::Texture*> textures) const
    {
        static GLenum const buffers[] = {GL_COLOR_ATTACHMENT0_EXT, GL_COLOR_ATTACHMENT1_EXT,
                                         GL_COLOR_ATTACHMENT2_EXT, GL_COLOR_ATTACHMENT3_EXT};
        GLsizei count = 0;
        for (osg::Texture* texture : textures)
        {
            GLuint const id = textureId(texture);
            if (texture->getTextureTarget() == GL_TEXTURE_3D)
                gl->glFramebufferTexture(GL_FRAMEBUFFER_EXT, buffers[count], id, 0);
            else
                gl->glFramebufferTexture2D(GL_FRAMEBUFFER_EXT, buffers[count], GL_TEXTURE_2D, id, 0);
            ++count;
        }
        for (GLsizei i = count; i < 4; ++i)
            gl->glFramebufferTexture2D(GL_FRAMEBUFFER_EXT, buffers[i], GL_TEXTURE_2D, 0, 0);
        gl->glDrawBuffers(count, buffers);
    }

    // Blending per attachment: on where the pass adds to a stored table.
    void blending(std::initializer_list<bool> perTarget) const
    {
        GLuint index = 0;
        for (bool on : perTarget)
            (on ? enablei : disablei)(GL_BLEND, index++);
    }

    void use(osg::Program* program) const { state.applyAttribute(program); }

    GLint location(char const* name) const
    {
        osg::Program::PerContextProgram const* pcp = state.getLastAppliedProgramObject();
        return pcp ? pcp->getUniformLocation(std::string(name)) : -1;
    }

    void uniform(char const* name, int value) const { gl->glUniform1i(location(name), value); }

    void identityLuminance() const
    {
        static GLfloat const identity[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};
        gl->glUniformMatrix3fv(location("luminance_from_radiance"), 1, GL_FALSE, identity);
    }

    void sample(char const* name, int unit, osg::Texture* texture) const
    {
        state.setActiveTextureUnit(unit);
        texture->apply(state);
        state.haveAppliedTextureAttribute(unit, texture);
        uniform(name, unit);
    }

    void viewport(int width, int height) const
    {
        glViewport(0, 0, width, height);
        state.haveAppliedAttribute(osg::StateAttribute::VIEWPORT);
    }

    void quad() const { glDrawArrays(GL_TRIANGLE_FAN, 0, kQuadVertices); }

    void layers(int depth) const
    {
        GLint const layer = location("layer");
        for (int z = 0; z < depth; ++z)
        {
            gl->glUniform1i(layer, z);
            quad();
        }
    }
};

CAtmosphericModelGeometry::CAtmosphericModelGeometry()
{
    setUseDisplayList(false);
    setUseVertexBufferObjects(true);
    setUseVertexArrayObject(true);

    CKVAString folder;
    Common::getResourceDirectory(folder);
    m_dumpFolder = std::string(folder.c_str()) + T::kFolder;
    createResources();
}

// A copy computes its own tables: it shares the settings, not the textures.
CAtmosphericModelGeometry::CAtmosphericModelGeometry(CAtmosphericModelGeometry const& other, osg::CopyOp const& copyop)
    : osg::Geometry(other, copyop)
    , m_dumpFolder(other.m_dumpFolder)
    , m_progress(other.m_progress)
    , m_reducedSampling(other.m_reducedSampling)
{
    createResources();
}

void CAtmosphericModelGeometry::createResources()
{
    using A = CKVAtmosphericScatttering;
    m_transmittanceTexture = A::createAtmosphereTexture2D(T::kTransmittanceWidth, T::kTransmittanceHeight);
    m_scatteringTexture =
        A::createAtmosphereTexture3D(T::kScatteringWidth, T::kScatteringHeight, T::kScatteringDepth, GL_RGBA, false);
    m_irradianceTexture = A::createAtmosphereTexture2D(T::kIrradianceWidth, T::kIrradianceHeight);
    m_deltaIrradianceTexture = A::createAtmosphereTexture2D(kDeltaIrradianceWidth, kDeltaIrradianceHeight);
    m_deltaRayleighTexture =
        A::createAtmosphereTexture3D(T::kScatteringWidth, T::kScatteringHeight, T::kScatteringDepth, GL_RGB, false);
    m_deltaMieTexture =
        A::createAtmosphereTexture3D(T::kScatteringWidth, T::kScatteringHeight, T::kScatteringDepth, GL_RGB, false);
    m_deltaScatteringDensityTexture =
        A::createAtmosphereTexture3D(T::kScatteringWidth, T::kScatteringHeight, T::kScatteringDepth, GL_RGB, false);
    setReducedSampling(m_reducedSampling);
}

void CAtmosphericModelGeometry::setReducedSampling(bool reduced)
{
    m_reducedSampling = reduced;
    for (int pass = 0; pass < PassCount; ++pass)
        m_programs[pass] = createProgram(static_cast<Pass>(pass), reduced);
}

osg::ref_ptr<osg::Program> CAtmosphericModelGeometry::createProgram(Pass pass, bool reducedSampling)
{
    PassSource const& source = kPassSources[pass];
    std::string fragment = std::string(kVersion) + (reducedSampling ? kReducedSampling : "");
    for (std::string const& chunk : KVAtmosphereShaders::modelLibrary())
        fragment += text(chunk.c_str());
    fragment += text(source.main);

    osg::ref_ptr<osg::Program> program = new osg::Program;
    program->setName(source.main);
    program->addShader(new osg::Shader(osg::Shader::VERTEX, kVersion + text("atmosphere_model.vert")));
    if (source.layered)
        program->addShader(new osg::Shader(osg::Shader::GEOMETRY, kVersion + text("atmosphere_model_layer.geom")));
    program->addShader(new osg::Shader(osg::Shader::FRAGMENT, fragment));
    return program;
}

void CAtmosphericModelGeometry::drawImplementation(osg::RenderInfo& renderInfo) const
{
    if (initialized)
        return;
    initialized = true;
    precompute(renderInfo);
}

void CAtmosphericModelGeometry::precompute(osg::RenderInfo& renderInfo) const
{
    osg::State& state = *renderInfo.getState();
    osg::GLExtensions* gl = state.get<osg::GLExtensions>();
    IndexedCapability enablei = nullptr;
    IndexedCapability disablei = nullptr;
    osg::setGLExtensionFuncPtr(enablei, "glEnablei");
    osg::setGLExtensionFuncPtr(disablei, "glDisablei");
    if (!gl || !gl->isFrameBufferObjectSupported || !enablei || !disablei)
    {
        OSG_WARN << "CAtmosphericModelGeometry: the context has no framebuffer objects" << std::endl;
        return;
    }
    PassContext pass{state, gl, enablei, disablei, std::chrono::steady_clock::now(), m_progress};

    GLint previousFramebuffer = 0;
    GLint previousDrawBuffer = GL_BACK;
    glGetIntegerv(GL_FRAMEBUFFER_BINDING_EXT, &previousFramebuffer);
    glGetIntegerv(GL_DRAW_BUFFER, &previousDrawBuffer);

    gl->glGenFramebuffers(1, &m_framebuffer);
    // The quad's arrays; the passes draw it as a fan, which the layered
    // passes' geometry stage takes as triangles.
    state.lazyDisablingOfVertexAttributes();
    drawVertexArraysImplementation(renderInfo);
    state.applyDisablingOfVertexAttributes();

    gl->glBlendEquationSeparate(GL_FUNC_ADD, GL_FUNC_ADD);
    gl->glBlendFuncSeparate(GL_ONE, GL_ONE, GL_ONE, GL_ONE);
    gl->glBindFramebuffer(GL_FRAMEBUFFER_EXT, m_framebuffer);

    osg::Texture* const transmittance = m_transmittanceTexture.get();
    osg::Texture* const deltaIrradiance = m_deltaIrradianceTexture.get();
    osg::Texture* const deltaRayleigh = m_deltaRayleighTexture.get();
    osg::Texture* const deltaMie = m_deltaMieTexture.get();
    osg::Texture* const deltaDensity = m_deltaScatteringDensityTexture.get();
    // The delta of each multiple order takes the place of delta Rayleigh.
    osg::Texture* const deltaMultiple = deltaRayleigh;

    pass.targets({transmittance});
    pass.blending({false});
    pass.viewport(T::kTransmittanceWidth, T::kTransmittanceHeight);
    pass.use(m_programs[TransmittancePass].get());
    pass.quad();
    pass.report("transmittance", 1);
    dump(pass, transmittance, T::kTransmittanceFile);

    pass.targets({deltaIrradiance, m_irradianceTexture.get()});
    pass.blending({false, false});
    pass.viewport(T::kIrradianceWidth, T::kIrradianceHeight);
    pass.use(m_programs[DirectIrradiancePass].get());
    pass.sample("transmittance_texture", 0, transmittance);
    pass.quad();
    pass.report("direct irradiance", 1);

    pass.targets({deltaRayleigh, deltaMie, m_scatteringTexture.get()});
    pass.blending({false, false, false});
    pass.viewport(T::kScatteringWidth, T::kScatteringHeight);
    pass.use(m_programs[SingleScatteringPass].get());
    pass.identityLuminance();
    pass.sample("transmittance_texture", 0, transmittance);
    pass.layers(T::kScatteringDepth);
    pass.report("single scattering", 1);

    for (int order = kFirstMultipleOrder; order <= kLastOrder; ++order)
    {
        pass.targets({deltaDensity});
        pass.blending({false});
        pass.viewport(T::kScatteringWidth, T::kScatteringHeight);
        pass.use(m_programs[ScatteringDensityPass].get());
        pass.sample("transmittance_texture", 0, transmittance);
        pass.sample("single_rayleigh_scattering_texture", 1, deltaRayleigh);
        pass.sample("single_mie_scattering_texture", 2, deltaMie);
        pass.sample("multiple_scattering_texture", 3, deltaMultiple);
        pass.sample("irradiance_texture", 4, deltaIrradiance);
        pass.uniform("scattering_order", order);
        pass.layers(T::kScatteringDepth);
        pass.report("scattering density", order);

        pass.targets({deltaIrradiance, m_irradianceTexture.get()});
        pass.blending({false, true});
        pass.viewport(T::kIrradianceWidth, T::kIrradianceHeight);
        pass.use(m_programs[IndirectIrradiancePass].get());
        pass.identityLuminance();
        pass.sample("single_rayleigh_scattering_texture", 1, deltaRayleigh);
        pass.sample("single_mie_scattering_texture", 2, deltaMie);
        pass.sample("multiple_scattering_texture", 3, deltaMultiple);
        pass.uniform("scattering_order", order - 1);
        pass.quad();
        pass.report("indirect irradiance", order);
        if (order == kLastOrder)
            dump(pass, m_irradianceTexture.get(), T::kIrradianceFile);

        pass.targets({deltaMultiple, m_scatteringTexture.get()});
        pass.blending({false, true});
        pass.viewport(T::kScatteringWidth, T::kScatteringHeight);
        pass.use(m_programs[MultipleScatteringPass].get());
        pass.identityLuminance();
        pass.sample("transmittance_texture", 0, transmittance);
        pass.sample("scattering_density_texture", 1, deltaDensity);
        pass.layers(T::kScatteringDepth);
        pass.report("multiple scattering", order);
        if (order == kLastOrder)
            dump(pass, m_scatteringTexture.get(), T::kScatteringFile);
    }

    pass.targets({});
    pass.blending({false, false, false, false});
    gl->glBindFramebuffer(GL_FRAMEBUFFER_EXT, static_cast<GLuint>(previousFramebuffer));
    gl->glDeleteFramebuffers(1, &m_framebuffer);
    m_framebuffer = 0;
    glDrawBuffer(static_cast<GLenum>(previousDrawBuffer));
    for (osg::Texture* delta : {deltaIrradiance, deltaRayleigh, deltaMie, deltaDensity})
        delta->releaseGLObjects(&state);
    state.setActiveTextureUnit(0);
    // Blending and textures were set behind the state's back.
    state.haveAppliedMode(GL_BLEND);
    state.dirtyAllAttributes();
}

void CAtmosphericModelGeometry::dump(PassContext& pass, osg::Texture* texture, char const* fileName) const
{
    GLenum const target = texture->getTextureTarget();
    std::size_t const bytes = std::size_t(texture->getTextureWidth()) * std::max(texture->getTextureHeight(), 1) *
                              std::max(texture->getTextureDepth(), 1) * T::kTexelBytes;
    std::unique_ptr<unsigned char[]> texels(new unsigned char[bytes]);
    pass.state.setActiveTextureUnit(0);
    glBindTexture(target, pass.textureId(texture));
    glGetTexImage(target, 0, GL_RGBA, GL_FLOAT, texels.get());
    pass.state.haveAppliedTextureAttribute(0, osg::StateAttribute::TEXTURE);

    std::string const path = m_dumpFolder + fileName;
    std::FILE* file = std::fopen(path.c_str(), "wb");
    if (!file)
    {
        OSG_WARN << "CAtmosphericModelGeometry: cannot write " << path << std::endl;
        return;
    }
    std::fwrite(texels.get(), 1, bytes, file);
    std::fclose(file);
    m_writtenFiles.push_back(path);
    pass.report("wrote " + path, 0);
}

void CAtmosphericModelGeometry::releaseGLObjects(osg::State* state) const
{
    osg::Geometry::releaseGLObjects(state);
    for (osg::Texture* texture : {static_cast<osg::Texture*>(m_transmittanceTexture.get()),
                                  static_cast<osg::Texture*>(m_scatteringTexture.get()),
                                  static_cast<osg::Texture*>(m_irradianceTexture.get()),
                                  static_cast<osg::Texture*>(m_deltaIrradianceTexture.get()),
                                  static_cast<osg::Texture*>(m_deltaRayleighTexture.get()),
                                  static_cast<osg::Texture*>(m_deltaMieTexture.get()),
                                  static_cast<osg::Texture*>(m_deltaScatteringDensityTexture.get())})
        if (texture)
            texture->releaseGLObjects(state);
    for (osg::ref_ptr<osg::Program> const& program : m_programs)
        if (program.valid())
            program->releaseGLObjects(state);
}

osg::ref_ptr<CBGGeode> createAtmosphereModelGeode()
{
    osg::ref_ptr<osg::Vec3Array> corners = new osg::Vec3Array;
    corners->push_back(osg::Vec3(-1.0f, 1.0f, 0.0f));
    corners->push_back(osg::Vec3(-1.0f, -1.0f, 0.0f));
    corners->push_back(osg::Vec3(1.0f, -1.0f, 0.0f));
    corners->push_back(osg::Vec3(1.0f, 1.0f, 0.0f));
    osg::ref_ptr<osg::Vec2Array> uvs = new osg::Vec2Array;
    uvs->push_back(osg::Vec2(0.0f, 1.0f));
    uvs->push_back(osg::Vec2(0.0f, 0.0f));
    uvs->push_back(osg::Vec2(1.0f, 0.0f));
    uvs->push_back(osg::Vec2(1.0f, 1.0f));
    osg::ref_ptr<osg::DrawElementsUInt> quad = new osg::DrawElementsUInt(GL_QUADS);
    for (unsigned int i = 0; i < kQuadVertices; ++i)
        quad->push_back(i);

    osg::ref_ptr<CAtmosphericModelGeometry> geometry = new CAtmosphericModelGeometry;
    geometry->setVertexArray(corners.get());
    geometry->setTexCoordArray(0, uvs.get());
    geometry->addPrimitiveSet(quad.get());

    osg::ref_ptr<CBGGeode> geode = new CBGGeode;
    geode->addDrawable(geometry.get());
    return geode;
}

} // namespace Kelvor
