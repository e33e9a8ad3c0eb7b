#pragma once

#include <cstdint>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

namespace Kelvor {

// Writes small uncompressed DDS files (32-bit BGRA), one solid colour per
// face, for the cube-file readers.
struct DDSTestFile
{
    struct Colour
    {
        unsigned char r, g, b, a;
    };

    // `faces` colours: six make a cube file, one a plain texture. `levels`
    // above 1 adds a mipmap chain, each level the same colour.
    static bool write(std::string const& path, unsigned int size, std::vector<Colour> const& faces,
                      unsigned int levels = 1, bool truncate = false)
    {
        std::vector<std::uint32_t> header(32, 0);  // magic + 124 bytes
        header[0] = 0x20534444;
        header[1] = 124;
        header[2] = 0x1 | 0x2 | 0x4 | 0x1000 | (levels > 1 ? 0x20000 : 0);
        header[3] = size;
        header[4] = size;
        header[7] = levels;
        header[19] = 32;          // pixel format size
        header[20] = 0x40 | 0x1;  // RGB with alpha
        header[22] = 32;
        header[23] = 0x00ff0000;
        header[24] = 0x0000ff00;
        header[25] = 0x000000ff;
        header[26] = 0xff000000;
        header[27] = 0x1000;
        if (faces.size() == 6)
            header[28] = 0x200 | 0xFC00;
        std::vector<unsigned char> bytes(128);
        std::memcpy(bytes.data(), header.data(), 128);
        for (Colour const& colour : faces) {
            unsigned int s = size;
            for (unsigned int level = 0; level < levels; ++level) {
                for (unsigned int i = 0; i < s * s; ++i) {
                    bytes.push_back(colour.b);
                    bytes.push_back(colour.g);
                    bytes.push_back(colour.r);
                    bytes.push_back(colour.a);
                }
                s = s > 1 ? s / 2 : 1;
            }
        }
        if (truncate)
            bytes.resize(bytes.size() - 16);
        std::ofstream out(path, std::ios::binary);
        out.write(reinterpret_cast<char const*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        return static_cast<bool>(out);
    }

    static std::vector<Colour> sixColours()
    {
        return {{255, 0, 0, 255}, {0, 255, 255, 255}, {0, 255, 0, 255},
                {255, 0, 255, 255}, {0, 0, 255, 255}, {255, 255, 0, 255}};
    }
};

} // namespace Kelvor
