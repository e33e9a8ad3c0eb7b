#include "TarnwickGeometry/KVMath.h"

#include <cmath>

namespace Kelvor {
namespace Math {

bool isNormal(double value)
{
    return std::isnormal(value);
}

bool isZero(double value, double tolerance)
{
    return std::fabs(value) <= tolerance;
}

int compareDbl(double a, double b, double tolerance)
{
    double const diff = a - b;
    if (std::fabs(diff) <= tolerance)
        return 0;
    return diff < 0.0 ? -1 : 1;
}

double degreesToRadians(double degrees)
{
    return degrees * (kPi / 180.0);
}

double radiansToDegrees(double radians)
{
    return radians * (180.0 / kPi);
}

} // namespace Math
} // namespace Kelvor
