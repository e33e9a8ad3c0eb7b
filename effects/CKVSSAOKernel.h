#pragma once

#include <osg/Image>
#include <osg/Vec3f>
#include <osg/ref_ptr>

#include <vector>

namespace Kelvor {

class KVRand;

// The random tables of the ambient occlusion pass, drawn from the portable
// generator so that they match the engine's other platforms for the same
// seed: the sample kernel, then the noise that turns it per pixel.
class CKVSSAOKernel
{
public:
    static constexpr unsigned int kSize = 32;
    static constexpr unsigned int kNoiseSize = 4;

    // kSize vectors in the hemisphere around +z, scaled so that more of
    // them lie close to the centre. Three draws each: x, y, z.
    static std::vector<osg::Vec3f> makeKernel(KVRand& rand);
    // kNoiseSize by kNoiseSize texels of (x, y, 0) in -1..1, two draws
    // each: GL_RGB floats.
    static osg::ref_ptr<osg::Image> makeNoise(KVRand& rand);
};

} // namespace Kelvor
