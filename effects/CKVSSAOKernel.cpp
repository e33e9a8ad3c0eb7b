#include "effects/CKVSSAOKernel.h"

#include "scene/KVRand.h"

namespace Kelvor {

namespace {

constexpr float kRandMax = static_cast<float>(KVRand::kMax);
// The scale of sample i grows with the square of i / kSize from the
// innermost tenth to the whole radius: most samples test near geometry,
// which is where creases are.
constexpr float kInnerScale = 0.1f;
constexpr float kOuterScale = 1.0f - kInnerScale;

// A draw mapped to -1..1.
float signedDraw(KVRand& rand)
{
    return 2.0f * static_cast<float>(rand.next()) / kRandMax - 1.0f;
}

} // namespace

std::vector<osg::Vec3f> CKVSSAOKernel::makeKernel(KVRand& rand)
{
    std::vector<osg::Vec3f> kernel;
    kernel.reserve(kSize);
    for (unsigned int i = 0; i < kSize; ++i)
    {
        float const t = static_cast<float>(i) / static_cast<float>(kSize);
        float const scale = kInnerScale + kOuterScale * t * t;
        float const x = signedDraw(rand) * scale;
        float const y = signedDraw(rand) * scale;
        // The height along the normal keeps its full 0..1: the kernel is
        // not normalised, and samples reach out along the normal further
        // than sideways.
        float const z = static_cast<float>(rand.next()) / kRandMax;
        kernel.emplace_back(x, y, z);
    }
    return kernel;
}

osg::ref_ptr<osg::Image> CKVSSAOKernel::makeNoise(KVRand& rand)
{
    osg::ref_ptr<osg::Image> image = new osg::Image;
    image->allocateImage(kNoiseSize, kNoiseSize, 1, GL_RGB, GL_FLOAT);
    float* texel = reinterpret_cast<float*>(image->data());
    for (unsigned int i = 0; i < kNoiseSize * kNoiseSize; ++i, texel += 3)
    {
        texel[0] = signedDraw(rand);
        texel[1] = signedDraw(rand);
        // Rotations about the normal only.
        texel[2] = 0.0f;
    }
    return image;
}

} // namespace Kelvor
