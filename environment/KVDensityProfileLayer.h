#pragma once

#include <string>

namespace Kelvor {

// One layer of an atmosphere density profile, in metres: the density at
// altitude h is expTerm * exp(expScale * h) + linearTerm * h + constantTerm,
// clamped to [0, 1]. A layer holds up to `width`; 0 means unbounded.
struct KVDensityProfileLayer
{
    std::string name;
    double width = 0.0;
    double expTerm = 0.0;
    double expScale = 0.0;
    double linearTerm = 0.0;
    double constantTerm = 0.0;
};

} // namespace Kelvor
