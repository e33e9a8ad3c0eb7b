// Textures read by surfaces, water and terrain: the anti-repetition noise,
// the snow normal map, the two error images shown for unusable material
// textures, the water's normal, height and environment images and the
// terrain layers. All are procedural; noise comes from an MSVC-compatible
// rand() so that the files are the same on every platform the engine runs on.
#include "tools/resgen/ResourceGenerator.h"

#include <osg/Image>
#include <osg/Vec3f>
#include <osgDB/WriteFile>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

namespace {

using Tarnwick::ResGen::makeParentDirectories;

class MsvcRand
{
public:
    explicit MsvcRand(unsigned int seed) : mState(seed) {}
    int next()
    {
        mState = mState * 214013u + 2531011u;
        return static_cast<int>((mState >> 16) & 0x7fffu);
    }
    float unit() { return next() / 32767.0f; }

private:
    unsigned int mState;
};

// Value noise that tiles over the image: `cells` lattice cells per side,
// smooth interpolation, octaves halving in amplitude. Values in [0, 1].
class TilingNoise
{
public:
    TilingNoise(unsigned int seed, int cells, int octaves) : mCells(cells), mOctaves(octaves)
    {
        MsvcRand rand(seed);
        int const largest = cells << (octaves - 1);
        mLattice.resize(static_cast<std::size_t>(largest) * largest);
        for (float& v : mLattice)
            v = rand.unit();
        mStride = largest;
    }

    // u, v in [0, 1).
    float operator()(float u, float v) const
    {
        float sum = 0.0f;
        float amplitude = 1.0f;
        float total = 0.0f;
        int cells = mCells;
        for (int o = 0; o < mOctaves; ++o) {
            sum += amplitude * octave(u * cells, v * cells, cells);
            total += amplitude;
            amplitude *= 0.5f;
            cells *= 2;
        }
        return sum / total;
    }

private:
    float at(int x, int y, int cells) const
    {
        x = ((x % cells) + cells) % cells;
        y = ((y % cells) + cells) % cells;
        return mLattice[static_cast<std::size_t>(y) * mStride + x];
    }
    float octave(float x, float y, int cells) const
    {
        int const x0 = static_cast<int>(std::floor(x));
        int const y0 = static_cast<int>(std::floor(y));
        float fx = x - x0;
        float fy = y - y0;
        fx = fx * fx * (3.0f - 2.0f * fx);
        fy = fy * fy * (3.0f - 2.0f * fy);
        float const a = at(x0, y0, cells) + (at(x0 + 1, y0, cells) - at(x0, y0, cells)) * fx;
        float const b = at(x0, y0 + 1, cells) + (at(x0 + 1, y0 + 1, cells) - at(x0, y0 + 1, cells)) * fx;
        return a + (b - a) * fy;
    }

    int mCells;
    int mOctaves;
    int mStride = 0;
    std::vector<float> mLattice;
};

unsigned char toByte(float value)
{
    return static_cast<unsigned char>(std::clamp(value, 0.0f, 1.0f) * 255.0f + 0.5f);
}

osg::ref_ptr<osg::Image> makeImage(int width, int height, GLenum format)
{
    osg::ref_ptr<osg::Image> image = new osg::Image;
    image->allocateImage(width, height, 1, format, GL_UNSIGNED_BYTE);
    return image;
}

using Shader = std::function<osg::Vec3f(float u, float v)>;

osg::ref_ptr<osg::Image> shadeRGB(int width, int height, Shader const& shade)
{
    osg::ref_ptr<osg::Image> image = makeImage(width, height, GL_RGB);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            osg::Vec3f const c = shade((x + 0.5f) / width, (y + 0.5f) / height);
            unsigned char* p = image->data(x, y);
            p[0] = toByte(c.x());
            p[1] = toByte(c.y());
            p[2] = toByte(c.z());
        }
    }
    return image;
}

// A tangent-space normal map of a tiling height field, encoded as n * 0.5 + 0.5.
osg::ref_ptr<osg::Image> normalMap(int size, TilingNoise const& height, float strength)
{
    float const step = 1.0f / size;
    return shadeRGB(size, size, [&](float u, float v) {
        auto h = [&](float a, float b) { return height(a - std::floor(a), b - std::floor(b)); };
        float const dx = (h(u + step, v) - h(u - step, v)) * strength;
        float const dy = (h(u, v + step) - h(u, v - step)) * strength;
        osg::Vec3f n(-dx, -dy, 1.0f);
        n.normalize();
        return n * 0.5f + osg::Vec3f(0.5f, 0.5f, 0.5f);
    });
}

// Magenta and black squares, so that the image cannot pass for a real
// material, with a white mark telling the two errors apart.
osg::ref_ptr<osg::Image> errorImage(std::function<bool(float x, float y)> const& mark)
{
    int const size = 64;
    return shadeRGB(size, size, [&](float u, float v) {
        // Centred coordinates in [-1, 1].
        float const x = u * 2.0f - 1.0f;
        float const y = v * 2.0f - 1.0f;
        if (mark(x, y))
            return osg::Vec3f(1.0f, 1.0f, 1.0f);
        int const cx = static_cast<int>(u * 8.0f);
        int const cy = static_cast<int>(v * 8.0f);
        return (cx + cy) % 2 == 0 ? osg::Vec3f(1.0f, 0.0f, 1.0f) : osg::Vec3f(0.0f, 0.0f, 0.0f);
    });
}

// The water's grey environment, lighter towards the zenith (world z up).
osg::ref_ptr<osg::Image> cubeFace(int face)
{
    int const size = 64;
    return shadeRGB(size, size, [face](float u, float v) {
        float const s = u * 2.0f - 1.0f;
        float const t = v * 2.0f - 1.0f;
        osg::Vec3f dir;
        switch (face) {
        case 0: dir.set(1.0f, -t, -s); break;
        case 1: dir.set(-1.0f, -t, s); break;
        case 2: dir.set(s, 1.0f, t); break;
        case 3: dir.set(s, -1.0f, -t); break;
        case 4: dir.set(s, -t, 1.0f); break;
        default: dir.set(-s, -t, -1.0f); break;
        }
        dir.normalize();
        float const grey = 0.35f + 0.45f * (dir.z() * 0.5f + 0.5f);
        return osg::Vec3f(grey, grey, grey * 1.04f);
    });
}

// A terrain layer: a base colour modulated by tiling noise.
osg::ref_ptr<osg::Image> layer(unsigned int seed, osg::Vec3f const& dark, osg::Vec3f const& light)
{
    TilingNoise const noise(seed, 8, 4);
    return shadeRGB(128, 128, [&](float u, float v) {
        float const n = noise(u, v);
        return dark + (light - dark) * n;
    });
}

bool write(osg::Image const& image, std::string const& path)
{
    if (!makeParentDirectories(path))
        return false;
    if (!osgDB::writeImageFile(image, path)) {
        std::fprintf(stderr, "tarnwick-resgen: cannot write %s\n", path.c_str());
        return false;
    }
    return true;
}

Tarnwick::ResGen::ResourceGeneratorRegistration const reg("surface", [](std::string const& root) {
    bool ok = true;

    // Anti-repetition noise: read at a low frequency, so few cells.
    TilingNoise const repeatNoise(1, 4, 3);
    ok &= write(*shadeRGB(256, 256, [&](float u, float v) {
                    float const n = repeatNoise(u, v);
                    return osg::Vec3f(n, n, n);
                }),
                root + "repnoise.jpg");

    TilingNoise const snowHeight(2, 16, 4);
    ok &= write(*normalMap(256, snowHeight, 6.0f), root + "particle/snow_normal.tif");

    // Format error: a cross. Path error: a ring.
    ok &= write(*errorImage([](float x, float y) { return std::abs(std::abs(x) - std::abs(y)) < 0.12f; }),
                root + "error_format.png");
    ok &= write(*errorImage([](float x, float y) {
                    float const r = std::sqrt(x * x + y * y);
                    return r > 0.55f && r < 0.8f;
                }),
                root + "error_path.png");

    TilingNoise const waves(3, 8, 4);
    ok &= write(*normalMap(256, waves, 4.0f), root + "water/normal.tga");
    TilingNoise const ripples(4, 16, 3);
    ok &= write(*normalMap(256, ripples, 8.0f), root + "water/ripple_normal.tga");

    TilingNoise const swell(5, 4, 5);
    osg::ref_ptr<osg::Image> height = makeImage(256, 256, GL_LUMINANCE);
    for (int y = 0; y < 256; ++y)
        for (int x = 0; x < 256; ++x)
            *height->data(x, y) = toByte(swell((x + 0.5f) / 256.0f, (y + 0.5f) / 256.0f));
    ok &= write(*height, root + "water/gwater_height.png");
    ok &= write(*normalMap(256, swell, 5.0f), root + "water/gwater_normal.png");

    char const* const faces[6] = {"p_x_grijs.tga", "n_x_grijs.tga", "p_y_grijs.tga",
                                  "n_y_grijs.tga", "p_z_grijs.tga", "n_z_grijs.tga"};
    for (int i = 0; i < 6; ++i)
        ok &= write(*cubeFace(i), root + "water/" + faces[i]);

    ok &= write(*layer(10, {0.16f, 0.30f, 0.08f}, {0.35f, 0.55f, 0.18f}), root + "terrain/grass.png");
    ok &= write(*layer(11, {0.30f, 0.28f, 0.26f}, {0.55f, 0.52f, 0.48f}), root + "terrain/rock.dds");
    ok &= write(*layer(12, {0.36f, 0.30f, 0.24f}, {0.60f, 0.52f, 0.44f}), root + "terrain/rock2.dds");
    ok &= write(*layer(13, {0.80f, 0.82f, 0.86f}, {0.97f, 0.97f, 0.99f}), root + "terrain/snow_flat.dds");
    ok &= write(*layer(14, {0.70f, 0.73f, 0.78f}, {0.95f, 0.96f, 0.98f}), root + "terrain/snow.dds");
    ok &= write(*layer(15, {0.22f, 0.20f, 0.19f}, {0.46f, 0.42f, 0.38f}), root + "terrain/cliff.dds");
    return ok;
});

} // namespace
