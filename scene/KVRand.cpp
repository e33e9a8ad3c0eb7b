#include "scene/KVRand.h"

namespace Kelvor {

namespace {

// The multiplier and increment of the platform's generator; its sequence
// for seed 1 starts 41, 18467, 6334.
constexpr std::uint32_t kMultiplier = 214013u;
constexpr std::uint32_t kIncrement = 2531011u;
constexpr unsigned int kResultShift = 16;
constexpr std::uint64_t kStateMask = 0xFFFFFFFFu;

} // namespace

KVRand::KVRand(std::uint32_t seed)
    : mState(seed)
{
}

int KVRand::next()
{
    // Worked out in 64 bits and cut to the 32 the platform keeps: the same
    // value as a wrapping 32-bit product, with nothing overflowing.
    mState = static_cast<std::uint32_t>((std::uint64_t(mState) * kMultiplier + kIncrement) & kStateMask);
    return static_cast<int>((mState >> kResultShift) & static_cast<std::uint32_t>(kMax));
}

} // namespace Kelvor
