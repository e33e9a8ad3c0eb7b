// The atmosphere's GLSL: the generator's six programs and the lookup library
// must build as the generator and the sky programs assemble them, and the
// lookup must read the generated tables the way they were written.
#include "environment/CAtmosphericModelGeometry.h"
#include "environment/CKVAtmosphericScatttering.h"
#include "environment/KVAtmosphereShaders.h"
#include "environment/CBGGeode.h"
#include "environment/CFullScreenTriangleGeometry.h"
#include "programs/CKVProgramKinds.h"
#include "programs/KVShaderSource.h"
#include "support/GLTest.h"

#include "programs/ProgramVariantBuild.h"

#include <TarnwickCommon/Common.h>

#include <osg/Program>
#include <osg/Shader>
#include <osg/Texture>

#include <gtest/gtest.h>

#include <string>

namespace Kelvor {
namespace {

using programtest::buildVariant;

// Colour = the sky radiance along one fixed view (a uniform), tone-mapped.
char const* const kLookupMain = R"(
uniform vec3 view;
uniform vec3 sun;
layout(location = 0) out vec4 outColor;
void main()
{
    vec3 camera = vec3(0.0, 0.0, bottom_radius + 0.3);
    vec3 transmittance;
    vec3 radiance = GetSkyRadiance(camera, normalize(view), 0.0, sun, transmittance);
    vec3 toPoint = GetSkyRadianceToPoint(camera, camera + normalize(view) * 10.0, 0.0, sun, transmittance);
    vec3 skyIrradiance;
    vec3 sunIrradiance = GetSunAndSkyIrradiance(camera, vec3(0.0, 0.0, 1.0), sun, skyIrradiance);
    radiance += 0.0 * (toPoint + sunIrradiance + skyIrradiance + GetSolarRadiance());
    outColor = vec4(1.0 - exp(-radiance * 10.0), 1.0);
}
)";

osg::ref_ptr<osg::Program> lookupProgram()
{
    std::string fragment = CKVProgramKinds::kPrefixP;
    for (std::string const& chunk : KVAtmosphereShaders::lookupLibrary())
        fragment += KVShaderSource::get(chunk.c_str());
    fragment += kLookupMain;
    osg::ref_ptr<osg::Program> program = new osg::Program;
    program->addShader(
        new osg::Shader(osg::Shader::VERTEX, std::string(CKVProgramKinds::kPrefixV) + KVShaderSource::get("postprocess.vert")));
    program->addShader(new osg::Shader(osg::Shader::FRAGMENT, fragment));
    return program;
}

class AtmosphereShadersGLTest : public GLTest
{
protected:
    // The lookup's radiance along `view` with the sun at the zenith, tone-
    // mapped, on the tables of `atmosphere`.
    osg::Vec4 skyColour(CKVAtmosphericScatttering& atmosphere, osg::Vec3 const& view)
    {
        osg::ref_ptr<CBGGeode> geode = new CBGGeode;
        geode->addDrawable(new CFullScreenTriangleGeometry);
        osg::StateSet* stateSet = geode->getOrCreateStateSet();
        stateSet->setAttributeAndModes(lookupProgram().get());
        osg::Texture* const tables[] = {atmosphere.getTransmittanceTexture(), atmosphere.getScatteringTexture(),
                                        atmosphere.getIrradianceTexture()};
        char const* const names[] = {"transmittance_texture", "scattering_texture", "irradiance_texture"};
        for (int unit = 0; unit < 3; ++unit)
        {
            stateSet->setTextureAttribute(unit, tables[unit]);
            stateSet->addUniform(new osg::Uniform(names[unit], unit));
        }
        stateSet->addUniform(new osg::Uniform("view", view));
        stateSet->addUniform(new osg::Uniform("sun", osg::Vec3(0.0f, 0.0f, 1.0f)));
        osg::ref_ptr<osg::Image> image = context().renderFrames(geode.get(), 1, kPicture, kPicture);
        return image.valid() ? image->getColor(kPicture / 2, kPicture / 2) : osg::Vec4(-1, -1, -1, -1);
    }
    static constexpr int kPicture = 8;
};

TEST_F(AtmosphereShadersGLTest, GeneratorAndLookupProgramsBuild)
{
    ASSERT_TRUE(context().runWithContext([](osg::State& state) {
        for (int pass = 0; pass < CAtmosphericModelGeometry::PassCount; ++pass)
        {
            osg::ref_ptr<osg::Program> program =
                CAtmosphericModelGeometry::createProgram(static_cast<CAtmosphericModelGeometry::Pass>(pass));
            EXPECT_EQ(buildVariant(*program, state, {}), "") << "pass " << pass;
            program->releaseGLObjects(&state);
        }
        osg::ref_ptr<osg::Program> lookup = lookupProgram();
        for (programtest::DefineSet const& defines :
             {programtest::DefineSet{}, programtest::DefineSet{"_USE_NOT_BINDLESS_TEXTURE"}})
            EXPECT_EQ(buildVariant(*lookup, state, defines), "") << programtest::describe(defines);
        lookup->releaseGLObjects(&state);
    }));
}

TEST_F(AtmosphereShadersGLTest, SkyIsBlueOverheadAndBlackWithoutTables)
{
    // The tables the build generated.
    osg::ref_ptr<CKVAtmosphericScatttering> generated = new CKVAtmosphericScatttering;
    osg::Vec4 const zenith = skyColour(*generated, osg::Vec3(0.0f, 0.0f, 1.0f));
    EXPECT_GT(zenith.b(), 0.2f) << zenith.r() << " " << zenith.g() << " " << zenith.b();
    EXPECT_GT(zenith.b(), zenith.g());
    EXPECT_GT(zenith.g(), zenith.r());

    // None at all: the sky is black, and nothing fails on the way.
    Common::setResourceDirectory("/tmp/tarnwick-no-such-resource-dir");
    osg::ref_ptr<CKVAtmosphericScatttering> missing = new CKVAtmosphericScatttering;
    Common::setResourceDirectory(nullptr);
    osg::Vec4 const black = skyColour(*missing, osg::Vec3(0.0f, 0.0f, 1.0f));
    EXPECT_LT(black.r() + black.g() + black.b(), 0.01f) << black.r() << " " << black.g() << " " << black.b();
}

} // namespace
} // namespace Kelvor
