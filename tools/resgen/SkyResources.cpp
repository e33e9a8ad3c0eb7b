// The sky's images: the six faces of the cloud cube (density in every
// channel, white cloud on black clear sky, with a haze band at the horizon),
// the star noise, and a small water-mask picture for trying the mask.
// World z is up: +Z is the zenith face, -Z the ground face, which stays clear
// because a user sky puts that face on every side of its cloud layer.
#include "tools/resgen/ResourceGenerator.h"

#include <osg/Image>
#include <osg/Vec3f>
#include <osgDB/WriteFile>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>

namespace {

using Tarnwick::ResGen::makeParentDirectories;

// A fixed linear congruential sequence: the same files on every machine.
class Lcg
{
public:
    explicit Lcg(unsigned int seed) : mState(seed) {}
    float unit()
    {
        mState = mState * 1664525u + 1013904223u;
        return static_cast<float>((mState >> 8) & 0xffffu) / 65535.0f;
    }

private:
    unsigned int mState;
};

// Smooth 3D value noise over directions, so that the cloud faces meet
// without seams.
class DirectionNoise
{
public:
    explicit DirectionNoise(unsigned int seed)
    {
        Lcg rand(seed);
        for (float& v : mLattice)
            v = rand.unit();
    }
    float operator()(osg::Vec3f const& p) const
    {
        float sum = 0.0f;
        float amplitude = 0.5f;
        float frequency = 3.0f;
        for (int octave = 0; octave < 4; ++octave) {
            sum += amplitude * smooth(p * frequency);
            amplitude *= 0.5f;
            frequency *= 2.0f;
        }
        return sum / 0.9375f;
    }

private:
    static constexpr int kSize = 32;
    float at(int x, int y, int z) const
    {
        auto wrap = [](int v) { return ((v % kSize) + kSize) % kSize; };
        return mLattice[(wrap(z) * kSize + wrap(y)) * kSize + wrap(x)];
    }
    float smooth(osg::Vec3f const& p) const
    {
        int const x0 = static_cast<int>(std::floor(p.x()));
        int const y0 = static_cast<int>(std::floor(p.y()));
        int const z0 = static_cast<int>(std::floor(p.z()));
        auto fade = [](float t) { return t * t * (3.0f - 2.0f * t); };
        float const fx = fade(p.x() - x0);
        float const fy = fade(p.y() - y0);
        float const fz = fade(p.z() - z0);
        auto lerp = [](float a, float b, float t) { return a + (b - a) * t; };
        float const c00 = lerp(at(x0, y0, z0), at(x0 + 1, y0, z0), fx);
        float const c10 = lerp(at(x0, y0 + 1, z0), at(x0 + 1, y0 + 1, z0), fx);
        float const c01 = lerp(at(x0, y0, z0 + 1), at(x0 + 1, y0, z0 + 1), fx);
        float const c11 = lerp(at(x0, y0 + 1, z0 + 1), at(x0 + 1, y0 + 1, z0 + 1), fx);
        return lerp(lerp(c00, c10, fy), lerp(c01, c11, fy), fz);
    }
    float mLattice[kSize * kSize * kSize];
};

// The direction through texel (s, t) in [-1, 1] of a cube face, in the
// face order and orientation that cube-map sampling uses.
osg::Vec3f faceDirection(int face, float s, float t)
{
    switch (face) {
    case 0: return osg::Vec3f(1.0f, -t, -s);
    case 1: return osg::Vec3f(-1.0f, -t, s);
    case 2: return osg::Vec3f(s, 1.0f, t);
    case 3: return osg::Vec3f(s, -1.0f, -t);
    case 4: return osg::Vec3f(s, -t, 1.0f);
    default: return osg::Vec3f(-s, -t, -1.0f);
    }
}

bool writeImage(osg::Image const& image, std::string const& path)
{
    if (!makeParentDirectories(path) || !osgDB::writeImageFile(image, path)) {
        std::fprintf(stderr, "resgen: cannot write %s\n", path.c_str());
        return false;
    }
    return true;
}

// Cloud density for a direction: clouds only above the horizon, thinning
// towards it, plus a soft haze band just above it.
float cloudDensity(DirectionNoise const& noise, osg::Vec3f direction)
{
    direction.normalize();
    float const elevation = direction.z();
    if (elevation <= 0.0f)
        return 0.0f;
    float const cover = std::clamp((noise(direction) - 0.55f) * 3.0f, 0.0f, 1.0f);
    float const fadeIn = std::clamp(elevation * 4.0f, 0.0f, 1.0f);
    float const haze = 0.25f * std::exp(-elevation * 12.0f);
    return std::clamp(cover * fadeIn + haze, 0.0f, 1.0f);
}

bool writeCloudFaces(std::string const& folder)
{
    static char const* const names[6] = {"/px.png", "/nx.png", "/py.png", "/ny.png", "/pz.png", "/nz.png"};
    DirectionNoise const noise(20240611u);
    int const size = 128;
    for (int face = 0; face < 6; ++face) {
        osg::ref_ptr<osg::Image> image = new osg::Image;
        image->allocateImage(size, size, 1, GL_RGB, GL_UNSIGNED_BYTE);
        for (int y = 0; y < size; ++y) {
            for (int x = 0; x < size; ++x) {
                float const s = (x + 0.5f) / size * 2.0f - 1.0f;
                float const t = (y + 0.5f) / size * 2.0f - 1.0f;
                // The ground face stays clear: see the file comment.
                float const density = face == 5 ? 0.0f : cloudDensity(noise, faceDirection(face, s, t));
                unsigned char const value = static_cast<unsigned char>(std::lround(density * 255.0f));
                unsigned char* texel = image->data(x, y);
                texel[0] = texel[1] = texel[2] = value;
            }
        }
        if (!writeImage(*image, folder + names[face]))
            return false;
    }
    return true;
}

bool writeStarNoise(std::string const& path)
{
    int const size = 256;
    Lcg rand(7u);
    osg::ref_ptr<osg::Image> image = new osg::Image;
    image->allocateImage(size, size, 1, GL_LUMINANCE, GL_UNSIGNED_BYTE);
    // The sky shows a star where the noise rises above three quarters: a
    // few texels in a thousand, so that the night sky is black between
    // stars. The rest stays a dim grey noise.
    constexpr float kStarDensity = 0.003f;
    constexpr float kDimCeiling = 0.6f;
    for (int y = 0; y < size; ++y) {
        for (int x = 0; x < size; ++x) {
            float const pick = rand.unit();
            float const value = rand.unit();
            float const level = pick < kStarDensity ? 0.8f + 0.2f * value : kDimCeiling * value;
            *image->data(x, y) = static_cast<unsigned char>(level * 255.0f);
        }
    }
    return writeImage(*image, path);
}

// 64 x 32 pixels: a blue wave band over transparent pixels, so that tiling
// and the discarded transparent part are both visible.
bool writeWaterMaskSample(std::string const& path)
{
    int const width = 64;
    int const height = 32;
    osg::ref_ptr<osg::Image> image = new osg::Image;
    image->allocateImage(width, height, 1, GL_RGBA, GL_UNSIGNED_BYTE);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            float const wave = 10.0f + 6.0f * std::sin(x / static_cast<float>(width) * 2.0f * 3.14159265f);
            bool const water = y < wave;
            unsigned char* texel = image->data(x, y);
            texel[0] = water ? 30 : 0;
            texel[1] = water ? 90 : 0;
            texel[2] = water ? 200 : 0;
            texel[3] = water ? 255 : 0;
        }
    }
    return writeImage(*image, path);
}

Tarnwick::ResGen::ResourceGeneratorRegistration const reg("sky", [](std::string const& root) {
    return writeCloudFaces(root + "/skybox") && writeStarNoise(root + "/skybox/grayNoise.png") &&
           writeWaterMaskSample(root + "/water/watermask_sample.png");
});

} // namespace
