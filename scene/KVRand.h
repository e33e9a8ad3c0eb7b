#pragma once

#include <cstdint>

namespace Kelvor {

// The C library's rand() as the engine's other platforms have it: a 32-bit
// linear congruential state whose bits 16 to 30 are the result, 0 to 32767,
// seeded with 1 until told otherwise. Random tables that must come out the
// same on every platform (the ambient occlusion kernel and noise, weather
// particle seeds) draw from here and never from the C library, whose range
// and sequence differ between platforms (glibc's goes up to 2^31 - 1).
class KVRand
{
public:
    static constexpr int kMax = 32767;
    static constexpr std::uint32_t kDefaultSeed = 1;

    explicit KVRand(std::uint32_t seed = kDefaultSeed);

    void seed(std::uint32_t seed) { mState = seed; }
    // The next value, 0 to kMax.
    int next();

private:
    // The platform keeps 32 bits of state: it wraps at 2^32.
    std::uint32_t mState;
};

} // namespace Kelvor
