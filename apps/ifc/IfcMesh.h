#pragma once

#include <array>
#include <cstdint>
#include <vector>

namespace Kelvor {

// Triangles of one product in one colour, in world coordinates (metres, z up).
struct IfcMesh
{
    // Linear RGBA in [0, 1]; alpha below 1 is translucent.
    std::array<float, 4> rgba{{1.0f, 1.0f, 1.0f, 1.0f}};
    // x, y, z per vertex.
    std::vector<double> positions;
    // Three vertex indices per triangle.
    std::vector<unsigned int> triangles;

    // The colour as bytes 0xRRGGBBAA: meshes of one product are merged,
    // shapes compared and materials shared by this key.
    static std::uint32_t packColour(std::array<float, 4> const& rgba)
    {
        std::uint32_t key = 0;
        for (float channel : rgba) {
            float const clamped = channel < 0.0f ? 0.0f : (channel > 1.0f ? 1.0f : channel);
            key = (key << 8) | static_cast<std::uint32_t>(clamped * 255.0f + 0.5f);
        }
        return key;
    }
    std::uint32_t getColourKey() const { return packColour(rgba); }

    unsigned int getNumVertex() const { return static_cast<unsigned int>(positions.size() / 3); }
    unsigned int getNumTriangle() const { return static_cast<unsigned int>(triangles.size() / 3); }
};

} // namespace Kelvor
