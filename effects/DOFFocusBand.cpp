#include "effects/DOFFocusBand.h"

namespace Kelvor {

DOFFocusBand DOFFocusBand::fromDepthRange(double zNear, double zFar, float nearEndFraction, float farBeginFraction)
{
    double const range = zFar - zNear;
    DOFFocusBand band;
    band.nearBegin = static_cast<float>(zNear);
    band.nearEnd = static_cast<float>(nearEndFraction * range + zNear);
    band.farBegin = static_cast<float>(farBeginFraction * range + zNear);
    band.farEnd = static_cast<float>(zFar);
    return band;
}

} // namespace Kelvor
