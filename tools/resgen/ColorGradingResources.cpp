// Colour grading tables: 512 x 512 images of 64 slices of 64 x 64 texels,
// 8 by 8. Slice s (blue = s / 63) sits in block column s % 8, block row s / 8
// counted from the top; inside a block red grows to the right and green
// downwards, one step per texel (value = texel / 63).
#include "tools/resgen/ResourceGenerator.h"

#include <osg/Image>
#include <osgDB/WriteFile>

#include <cstdio>
#include <functional>
#include <string>

namespace {

constexpr int kSize = 512;
constexpr int kBlock = 64;
constexpr int kBlocksPerRow = 8;

using Grade = std::function<void(float const in[3], float out[3])>;

osg::ref_ptr<osg::Image> makeTable(Grade const& grade)
{
    osg::ref_ptr<osg::Image> image = new osg::Image;
    image->allocateImage(kSize, kSize, 1, GL_RGB, GL_UNSIGNED_BYTE);
    for (int row = 0; row < kSize; ++row) {
        // osg::Image rows run bottom-up; the layout is told top-down.
        int const y = kSize - 1 - row;
        unsigned char* texel = image->data(0, row);
        for (int x = 0; x < kSize; ++x, texel += 3) {
            int const slice = (y / kBlock) * kBlocksPerRow + x / kBlock;
            float const in[3] = {float(x % kBlock) / (kBlock - 1), float(y % kBlock) / (kBlock - 1),
                                 float(slice) / (kBlock - 1)};
            float out[3];
            grade(in, out);
            for (int c = 0; c < 3; ++c)
                texel[c] = static_cast<unsigned char>(out[c] * 255.0f + 0.5f);
        }
    }
    return image;
}

bool writeTable(std::string const& path, Grade const& grade)
{
    if (!Tarnwick::ResGen::makeParentDirectories(path))
        return false;
    if (osgDB::writeImageFile(*makeTable(grade), path))
        return true;
    std::fprintf(stderr, "tarnwick-resgen: cannot write %s\n", path.c_str());
    return false;
}

Tarnwick::ResGen::ResourceGeneratorRegistration reg("colorgrading", [](std::string const& root) {
    // The identity leaves every colour as it is; the inverted table is a
    // known, easily predicted grade for checking the lookup.
    bool ok = writeTable(root + "colorgrading/identity.png", [](float const in[3], float out[3]) {
        for (int c = 0; c < 3; ++c)
            out[c] = in[c];
    });
    ok = writeTable(root + "colorgrading/invert.png", [](float const in[3], float out[3]) {
        for (int c = 0; c < 3; ++c)
            out[c] = 1.0f - in[c];
    }) && ok;
    return ok;
});

} // namespace
