#pragma once

#include <cstddef>

namespace Kelvor {

// The three precomputed atmosphere tables and their files: raw RGBA 32-bit
// float texels, x fastest, then y, then z, with no header. The files sit in
// the resource directory's "/skybox" folder.
struct KVAtmosphereTables
{
    static constexpr int kTransmittanceWidth = 256;
    static constexpr int kTransmittanceHeight = 64;
    static constexpr int kScatteringNuSize = 8;
    static constexpr int kScatteringMuSSize = 32;
    static constexpr int kScatteringMuSize = 128;
    static constexpr int kScatteringRSize = 32;
    static constexpr int kScatteringWidth = kScatteringNuSize * kScatteringMuSSize;
    static constexpr int kScatteringHeight = kScatteringMuSize;
    static constexpr int kScatteringDepth = kScatteringRSize;
    static constexpr int kIrradianceWidth = 64;
    static constexpr int kIrradianceHeight = 16;
    static constexpr std::size_t kTexelBytes = 4 * sizeof(float);

    static constexpr std::size_t kTransmittanceBytes =
        std::size_t(kTransmittanceWidth) * kTransmittanceHeight * kTexelBytes;
    static constexpr std::size_t kScatteringBytes =
        std::size_t(kScatteringWidth) * kScatteringHeight * kScatteringDepth * kTexelBytes;
    static constexpr std::size_t kIrradianceBytes = std::size_t(kIrradianceWidth) * kIrradianceHeight * kTexelBytes;

    static char const* const kFolder;             // "/skybox"
    static char const* const kTransmittanceFile;  // "/transmittance_texture.data"
    static char const* const kScatteringFile;     // "/scattering_texture.data"
    static char const* const kIrradianceFile;     // "/irradiance_texture.data"

    // The whole file at `path` in a block from new[], or null when the file
    // does not exist or does not hold exactly `expectedBytes` (a short table
    // would be read past its end by the upload, a long one is not ours). A
    // refused file is reported on OpenSceneGraph's warning channel with its
    // name and the size expected.
    static unsigned char* read(char const* path, std::size_t expectedBytes);
};

} // namespace Kelvor
