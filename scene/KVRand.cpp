#include "scene/KVRand.h"

namespace Kelvor {

namespace {

// The multiplier and increment of the platform's generator; its sequence
// for seed 1 starts 41, 18467, 6334.
constexpr std::uint32_t kMultiplier = 214013u;
constexpr std::uint32_t kIncrement = 2531011u;
constexpr unsigned int kResultShift = 16;

} // namespace

KVRand::KVRand(std::uint32_t seed)
    : mState(seed)
{
}

int KVRand::next()
{
    mState = mState * kMultiplier + kIncrement;
    return static_cast<int>((mState >> kResultShift) & static_cast<std::uint32_t>(kMax));
}

} // namespace Kelvor
