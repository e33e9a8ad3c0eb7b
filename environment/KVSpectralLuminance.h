#pragma once

#include <osg/Vec3d>

#include <vector>

namespace Kelvor {

// Conversion of spectral radiance, known at a few wavelengths, to linear
// sRGB luminance: the CIE 1931 2-degree colour matching functions summed
// over 360-829 nm at 1 nm, through the XYZ to sRGB matrix, times the maximum
// luminous efficacy. The tables are computed at the reference wavelengths
// 680, 550 and 440 nm; the factors weight each wavelength by the spectrum
// relative to its value at the reference, and by (lambda / reference) to the
// power `lambdaPower`, which models how the table's value at the reference
// stands for its neighbours.
class KVSpectralLuminance
{
public:
    static constexpr double kLambdaR = 680.0;
    static constexpr double kLambdaG = 550.0;
    static constexpr double kLambdaB = 440.0;
    static constexpr double kMaxLuminousEfficacy = 683.0; // lm / W
    static constexpr int kLambdaMin = 360;
    static constexpr int kLambdaMax = 830;

    static osg::Vec3d radianceToLuminanceFactors(std::vector<double> const& wavelengths,
                                                 std::vector<double> const& spectrum, double lambdaPower);

    // Piecewise-linear value of `values` at `wavelength`, held constant
    // beyond the ends.
    static double interpolate(std::vector<double> const& wavelengths, std::vector<double> const& values,
                              double wavelength);

    // Colour matching function `column` (1 x, 2 y, 3 z) at `wavelength` in
    // nm, from the 5 nm table; 0 at or beyond 360 and 830.
    static double cieColorMatching(double wavelength, int column);
};

} // namespace Kelvor
