// The atmosphere model's own numbers: the luminance factors that the lookup
// text carries as constants, the spectra, and how loading treats table files
// that are missing or of the wrong size.
#include "environment/CKVAtmosphericScatttering.h"
#include "environment/KVAtmosphereSpectra.h"
#include "environment/KVAtmosphereTables.h"
#include "programs/KVShaderSource.h"

#include <TarnwickCommon/Common.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <unistd.h>
#include <vector>

namespace Kelvor {
namespace {

namespace fs = std::filesystem;
using T = KVAtmosphereTables;

void expectRelative(osg::Vec3d const& actual, osg::Vec3d const& expected, char const* what)
{
    for (int c = 0; c < 3; ++c)
        EXPECT_NEAR(actual[c] / expected[c], 1.0, 1e-6) << what << " channel " << c << ": " << actual[c];
}

TEST(AtmosphereModelTest, LuminanceFactorsMatchTheLookupConstants)
{
    osg::ref_ptr<CKVAtmosphericScatttering> atmosphere = new CKVAtmosphericScatttering;
    EXPECT_EQ(atmosphere->getPrecomputedWavelengthCount(), 3);
    expectRelative(atmosphere->getSkySpectralRadianceToLuminance(),
                   osg::Vec3d(114974.916437, 71305.954816, 65310.548555), "sky");
    expectRelative(atmosphere->getSunSpectralRadianceToLuminance(),
                   osg::Vec3d(98242.786222, 69954.398112, 66475.012354), "sun");
}

// The numbers after "NAME = " (inside vec3(...) when there), from a shader text.
std::vector<double> shaderConstant(char const* text, std::string const& name)
{
    std::string const source = text ? text : "";
    std::size_t at = source.find(name + " = ");
    std::vector<double> values;
    if (at == std::string::npos)
        return values;
    at += name.size() + 3;
    if (source.compare(at, 5, "vec3(") == 0)
        at += 5;
    char const* cursor = source.c_str() + at;
    for (;;)
    {
        char* end = nullptr;
        double const v = std::strtod(cursor, &end);
        if (end == cursor)
            break;
        values.push_back(v);
        cursor = end;
        while (*cursor == ',' || *cursor == ' ')
            ++cursor;
    }
    return values;
}

// The lookup and the generator carry the factors and the sun-angle cut-off
// as literal constants: they must stay what the model computes, including
// the lookup's mu_s_min, which is the cosine of the maximum sun zenith
// angle read as degrees and is kept so on purpose.
TEST(AtmosphereModelTest, ShaderConstantsAreTheModelsNumbers)
{
    osg::ref_ptr<CKVAtmosphericScatttering> atmosphere = new CKVAtmosphericScatttering;
    osg::Vec3d const sky = atmosphere->getSkySpectralRadianceToLuminance();
    osg::Vec3d const sun = atmosphere->getSunSpectralRadianceToLuminance();
    double const maxSunZenithAngle = 2.0943951023931953;
    double const degree = std::acos(-1.0) / 180.0;
    for (char const* file : {"atmosphere_lookup_parameters", "atmosphere_model_parameters"})
    {
        SCOPED_TRACE(file);
        char const* text = KVShaderSource::get(file);
        ASSERT_NE(text, nullptr);
        std::vector<double> const skyText = shaderConstant(text, "SKY_SPECTRAL_RADIANCE_TO_LUMINANCE");
        std::vector<double> const sunText = shaderConstant(text, "SUN_SPECTRAL_RADIANCE_TO_LUMINANCE");
        ASSERT_EQ(skyText.size(), 3u);
        ASSERT_EQ(sunText.size(), 3u);
        expectRelative(osg::Vec3d(skyText[0], skyText[1], skyText[2]), sky, "sky");
        expectRelative(osg::Vec3d(sunText[0], sunText[1], sunText[2]), sun, "sun");
    }
    std::vector<double> const muSMin =
        shaderConstant(KVShaderSource::get("atmosphere_lookup_parameters"), "const Number mu_s_min");
    ASSERT_EQ(muSMin.size(), 1u);
    EXPECT_DOUBLE_EQ(muSMin[0], std::cos(maxSunZenithAngle * degree));
}

TEST(AtmosphereModelTest, SpectraFollowTheirSwitches)
{
    struct Case
    {
        bool constantSun;
        bool ozone;
    };
    for (Case const c : {Case{false, true}, Case{true, true}, Case{false, false}})
    {
        SCOPED_TRACE(testing::Message() << "constant sun " << c.constantSun << ", ozone " << c.ozone);
        KVAtmosphereSpectrumInputs inputs;
        inputs.useConstantSolarSpectrum = c.constantSun;
        inputs.useOzone = c.ozone;
        KVAtmosphereSpectra const s = KVAtmosphereSpectra::build(inputs);
        ASSERT_EQ(s.wavelengths.size(), 48u);
        EXPECT_EQ(s.wavelengths.back(), 830.0);
        EXPECT_EQ(KVAtmosphereSpectra::rowOf(830), 47);
        for (std::size_t i = 0; i < s.wavelengths.size(); ++i)
        {
            EXPECT_EQ(s.solarIrradiance[i], c.constantSun ? 1.5 : KVAtmosphereSpectra::kSolarIrradiance[i]) << i;
            if (c.ozone)
                EXPECT_NEAR(s.absorptionExtinction[i] / (5.374e18 * KVAtmosphereSpectra::kOzoneCrossSection[i]), 1.0,
                            1e-9)
                    << i;
            else
                EXPECT_EQ(s.absorptionExtinction[i], 0.0) << i;
        }
        // At 680 nm the Rayleigh coefficient is the generator's 0.005802 per km.
        EXPECT_NEAR(s.rayleighScattering[KVAtmosphereSpectra::rowOf(680)] * 1000.0, 0.005802, 1e-6);
        EXPECT_NEAR(s.mieScattering[0] / s.mieExtinction[0], 0.9, 1e-12);
    }
}

// A resource directory of our own, with table files of chosen sizes.
class AtmosphereLoadingTest : public testing::Test
{
protected:
    void SetUp() override
    {
        mRoot = fs::temp_directory_path() / ("kv-atmosphere-" + std::to_string(::getpid()));
        fs::create_directories(mRoot / "skybox");
        Common::setResourceDirectory(mRoot.string().c_str());
    }
    void TearDown() override
    {
        Common::setResourceDirectory(nullptr);
        fs::remove_all(mRoot);
    }
    void writeTable(char const* name, std::size_t bytes)
    {
        std::ofstream out(mRoot / ("skybox" + std::string(name)), std::ios::binary);
        std::vector<char> zeros(bytes, 0);
        out.write(zeros.data(), static_cast<std::streamsize>(zeros.size()));
    }
    fs::path mRoot;
};

TEST_F(AtmosphereLoadingTest, OnlyTablesOfExactSizeAreRead)
{
    struct Case
    {
        char const* what;
        std::ptrdiff_t sizeChange; // against the expected size; 1 means absent
        bool read;
    };
    for (Case const c : {Case{"exact", 0, true}, Case{"short by one texel", -16, false},
                         Case{"one byte long", 1, false}, Case{"empty", -262144, false}})
    {
        SCOPED_TRACE(c.what);
        writeTable(T::kTransmittanceFile, std::size_t(std::ptrdiff_t(T::kTransmittanceBytes) + c.sizeChange));
        std::unique_ptr<unsigned char[]> block(CKVAtmosphericScatttering::readAtmosphereDataFile(
            (mRoot.string() + "/skybox" + T::kTransmittanceFile).c_str(), T::kTransmittanceBytes));
        EXPECT_EQ(block != nullptr, c.read);
    }
    EXPECT_EQ(CKVAtmosphericScatttering::readAtmosphereDataFile((mRoot.string() + "/skybox/none.data").c_str(), 16),
              nullptr);
}

TEST_F(AtmosphereLoadingTest, MissingOrTruncatedTablesLeaveThoseTexturesEmpty)
{
    // Transmittance whole, scattering cut short, irradiance absent.
    writeTable(T::kTransmittanceFile, T::kTransmittanceBytes);
    writeTable(T::kScatteringFile, T::kScatteringBytes / 2);
    osg::ref_ptr<CKVAtmosphericScatttering> atmosphere = new CKVAtmosphericScatttering;

    osg::Image const* transmittance = atmosphere->getTransmittanceTexture()->getImage();
    ASSERT_NE(transmittance, nullptr);
    EXPECT_NE(transmittance->data(), nullptr);
    EXPECT_EQ(transmittance->s(), T::kTransmittanceWidth);
    EXPECT_EQ(transmittance->getInternalTextureFormat(), GL_RGBA32F_ARB);
    // No image and no storage: the units sample black.
    EXPECT_EQ(atmosphere->getScatteringTexture()->getImage(), nullptr);
    EXPECT_EQ(atmosphere->getScatteringTexture()->getTextureWidth(), 0);
    EXPECT_EQ(atmosphere->getIrradianceTexture()->getImage(), nullptr);
    EXPECT_EQ(atmosphere->getIrradianceTexture()->getTextureWidth(), 0);
}

} // namespace
} // namespace Kelvor
