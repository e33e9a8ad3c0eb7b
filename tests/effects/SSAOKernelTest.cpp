// The random tables of ambient occlusion against a reference written from
// the formulas, with the platform's generator spelt out in 64-bit
// arithmetic (so that the reference itself cannot overflow).
#include "effects/CKVSSAOKernel.h"
#include "scene/KVRand.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace Kelvor {
namespace {

class ReferenceRand
{
public:
    explicit ReferenceRand(std::uint64_t seed) : mState(seed) {}
    int next()
    {
        mState = (mState * 214013u + 2531011u) % (std::uint64_t(1) << 32);
        return static_cast<int>((mState >> 16) & 0x7FFF);
    }

private:
    std::uint64_t mState;
};

// The platform's published sequence for the default seed, then seeds whose
// state wraps past 2^32 at once.
TEST(KVRandTest, FollowsThePlatformSequence)
{
    KVRand rand;
    for (int expected : {41, 18467, 6334, 26500, 19169, 15724, 11478, 29358, 26962, 24464})
        EXPECT_EQ(rand.next(), expected);

    for (std::uint32_t seed : {0u, 1u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu})
    {
        KVRand wrapped(seed);
        ReferenceRand reference(seed);
        for (int i = 0; i < 1000; ++i)
            ASSERT_EQ(wrapped.next(), reference.next()) << "seed " << seed << ", draw " << i;
    }

    // Seeding again starts the sequence again.
    rand.seed(KVRand::kDefaultSeed);
    EXPECT_EQ(rand.next(), 41);
}

// Kernel first (x, y, z per sample), then the noise from the draws that
// follow: the order the occlusion pass draws them in.
TEST(CKVSSAOKernelTest, KernelAndNoiseMatchTheFormulasForAFixedSeed)
{
    for (std::uint32_t seed : {1u, 0xFFFFFFFFu})
    {
        SCOPED_TRACE(seed);
        KVRand rand(seed);
        std::vector<osg::Vec3f> const kernel = CKVSSAOKernel::makeKernel(rand);
        osg::ref_ptr<osg::Image> const noise = CKVSSAOKernel::makeNoise(rand);

        ReferenceRand reference(seed);
        auto draw = [&reference] { return double(reference.next()) / 32767.0; };
        ASSERT_EQ(kernel.size(), 32u);
        for (unsigned int i = 0; i < 32; ++i)
        {
            double const t = i * 0.03125;
            double const s = 0.1 + 0.9 * t * t;
            double const x = (2.0 * draw() - 1.0) * s;
            double const y = (2.0 * draw() - 1.0) * s;
            double const z = draw();
            EXPECT_NEAR(kernel[i].x(), x, 1e-6) << i;
            EXPECT_NEAR(kernel[i].y(), y, 1e-6) << i;
            EXPECT_NEAR(kernel[i].z(), z, 1e-6) << i;
        }

        ASSERT_EQ(noise->s(), 4);
        ASSERT_EQ(noise->t(), 4);
        ASSERT_EQ(noise->getPixelFormat(), static_cast<GLenum>(GL_RGB));
        ASSERT_EQ(noise->getDataType(), static_cast<GLenum>(GL_FLOAT));
        float const* texel = reinterpret_cast<float const*>(noise->data());
        for (int i = 0; i < 16; ++i, texel += 3)
        {
            EXPECT_NEAR(texel[0], 2.0 * draw() - 1.0, 1e-6) << i;
            EXPECT_NEAR(texel[1], 2.0 * draw() - 1.0, 1e-6) << i;
            EXPECT_EQ(texel[2], 0.0f) << i;
        }
    }
}

} // namespace
} // namespace Kelvor
