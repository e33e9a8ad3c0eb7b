#pragma once

namespace Kelvor {
namespace Math {

// Default absolute tolerance of the geometry classes: far below any length
// that matters in a building model (metres), far above double rounding of
// coordinates up to a few kilometres.
double const kTolerance = 1.0e-10;
double const kPi = 3.14159265358979323846;

// True for a finite, non-zero value that is not subnormal: a usable divisor
// or range. Zero, infinities and NaN give false.
bool isNormal(double value);

// |value| <= tolerance. NaN is never zero.
bool isZero(double value, double tolerance = kTolerance);

// 0 when |a - b| <= tolerance, otherwise negative when a < b and positive
// when a > b. A NaN on either side compares as different (positive).
int compareDbl(double a, double b, double tolerance = kTolerance);

double degreesToRadians(double degrees);
double radiansToDegrees(double radians);

} // namespace Math
} // namespace Kelvor
