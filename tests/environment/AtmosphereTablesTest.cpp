// The tables the build generated into the resource directory: their sizes,
// their layout, and their values against a fine CPU integration of the same
// atmosphere.
#include "AtmosphereReference.h"

#include "environment/KVAtmosphereTables.h"

#include <TarnwickCommon/Common.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace Kelvor {
namespace {

using T = KVAtmosphereTables;
namespace ref = atmosphereref;

std::string tablePath(char const* name)
{
    CKVAString folder;
    Common::getResourceDirectory(folder);
    return std::string(folder.c_str()) + T::kFolder + name;
}

std::vector<float> readTexels(char const* name)
{
    std::ifstream in(tablePath(name), std::ios::binary);
    std::vector<char> bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    std::vector<float> texels(bytes.size() / sizeof(float));
    std::memcpy(texels.data(), bytes.data(), texels.size() * sizeof(float));
    return texels;
}

// Texel (x, y, z) of a table `width` x `height` wide, channel c.
float at(std::vector<float> const& t, int width, int height, int x, int y, int z, int c)
{
    return t[((std::size_t(z) * height + y) * width + x) * 4 + c];
}

class AtmosphereTablesTest : public testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        sTransmittance = readTexels(T::kTransmittanceFile);
        sScattering = readTexels(T::kScatteringFile);
        sIrradiance = readTexels(T::kIrradianceFile);
    }
    static std::vector<float> sTransmittance, sScattering, sIrradiance;
};
std::vector<float> AtmosphereTablesTest::sTransmittance;
std::vector<float> AtmosphereTablesTest::sScattering;
std::vector<float> AtmosphereTablesTest::sIrradiance;

TEST_F(AtmosphereTablesTest, FilesHoldWholeTablesWithOpaqueAlphaWhereStored)
{
    struct Case
    {
        char const* name;
        std::vector<float> const& texels;
        std::size_t bytes;
        bool alphaIsOne;
    };
    for (Case const& c : {Case{T::kTransmittanceFile, sTransmittance, T::kTransmittanceBytes, true},
                          Case{T::kScatteringFile, sScattering, T::kScatteringBytes, false},
                          Case{T::kIrradianceFile, sIrradiance, T::kIrradianceBytes, true}})
    {
        SCOPED_TRACE(c.name);
        ASSERT_EQ(c.texels.size() * sizeof(float), c.bytes) << tablePath(c.name);
        std::size_t bad = 0;
        for (std::size_t i = 0; i < c.texels.size(); ++i)
        {
            float const v = c.texels[i];
            bool const alpha = i % 4 == 3;
            if (!std::isfinite(v) || v < 0.0f || (alpha && c.alphaIsOne && v != 1.0f))
                ++bad;
        }
        EXPECT_EQ(bad, 0u) << "values not finite, negative, or alpha not 1";
    }
}

TEST_F(AtmosphereTablesTest, TransmittanceIsClearStraightUpAndFallsTowardsTheHorizon)
{
    ASSERT_EQ(sTransmittance.size() * sizeof(float), T::kTransmittanceBytes);
    int const w = T::kTransmittanceWidth;
    int const h = T::kTransmittanceHeight;
    // Top of the atmosphere, looking up.
    for (int c = 0; c < 3; ++c)
        EXPECT_GT(at(sTransmittance, w, h, 0, h - 1, 0, c), 0.999f) << c;
    // Along x the ray turns from the zenith to the horizon, at every height.
    for (int y : {0, h / 2, h - 1})
    {
        for (int c = 0; c < 3; ++c)
        {
            int rising = 0;
            for (int x = 1; x < w; ++x)
                rising += at(sTransmittance, w, h, x, y, 0, c) > at(sTransmittance, w, h, x - 1, y, 0, c) + 1e-6f;
            EXPECT_EQ(rising, 0) << "row " << y << " channel " << c;
            EXPECT_LT(at(sTransmittance, w, h, w - 1, y, 0, c), at(sTransmittance, w, h, 0, y, 0, c));
        }
    }
}

TEST_F(AtmosphereTablesTest, TransmittanceMatchesACpuIntegration)
{
    ASSERT_EQ(sTransmittance.size() * sizeof(float), T::kTransmittanceBytes);
    struct Texel
    {
        int x, y;
    };
    for (Texel const t : {Texel{0, 0}, Texel{100, 0}, Texel{200, 10}, Texel{64, 32}, Texel{150, 50}})
    {
        double r = 0.0, mu = 0.0;
        ref::transmittanceTexel(t.x, t.y, r, mu);
        ref::Vec3 const expected = ref::transmittanceToTop(r, mu);
        for (int c = 0; c < 3; ++c)
        {
            double const actual = at(sTransmittance, T::kTransmittanceWidth, T::kTransmittanceHeight, t.x, t.y, 0, c);
            EXPECT_NEAR(actual, expected[c], 0.01 * expected[c] + 1e-5)
                << "texel (" << t.x << ", " << t.y << ") r " << r << " mu " << mu << " channel " << c;
        }
    }
}

TEST_F(AtmosphereTablesTest, SingleMieScatteringMatchesACpuIntegration)
{
    ASSERT_EQ(sScattering.size() * sizeof(float), T::kScatteringBytes);
    // Sun well above the horizon, 1 km up, looking down at the ground 6 km
    // away: a path the generator's 50 samples resolve (over long paths they
    // are a few per cent off by design). The alpha channel is the red of
    // single Mie scattering, which no later order adds to.
    int const x = 3 * T::kScatteringMuSSize + 28;
    int const y = 60;
    int const z = 4;
    double r, mu, muS, nu;
    ref::scatteringTexel(x, y, z, r, mu, muS, nu);
    ASSERT_GT(muS, 0.2);
    ASSERT_LT(mu, 0.0);
    double const expected = ref::singleMie(r, mu, muS, nu)[0];
    double const actual = at(sScattering, T::kScatteringWidth, T::kScatteringHeight, x, y, z, 3);
    EXPECT_NEAR(actual, expected, 0.02 * expected) << "r " << r << " mu " << mu << " mu_s " << muS << " nu " << nu;
}

} // namespace
} // namespace Kelvor
