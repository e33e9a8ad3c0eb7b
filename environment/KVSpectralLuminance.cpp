#include "environment/KVSpectralLuminance.h"

#include <cmath>

namespace Kelvor {

namespace {

// CIE 1931 2-degree standard observer: wavelength (nm), x, y, z.
constexpr int kCieRows = 95;
constexpr double kCieStep = 5.0;
double const kCie1931[kCieRows][4] = {
    {360, 0.0001299, 3.917e-06, 0.0006061},
    {365, 0.0002321, 6.965e-06, 0.001086},
    {370, 0.0004149, 1.239e-05, 0.001946},
    {375, 0.0007416, 2.202e-05, 0.003486},
    {380, 0.001368, 3.9e-05, 0.006450001},
    {385, 0.002236, 6.4e-05, 0.01054999},
    {390, 0.004243, 0.00012, 0.02005001},
    {395, 0.00765, 0.000217, 0.03621},
    {400, 0.01431, 0.000396, 0.06785001},
    {405, 0.02319, 0.00064, 0.1102},
    {410, 0.04351, 0.00121, 0.2074},
    {415, 0.07763, 0.00218, 0.3713},
    {420, 0.13438, 0.004, 0.6456},
    {425, 0.21477, 0.0073, 1.0390501},
    {430, 0.2839, 0.0116, 1.3856},
    {435, 0.3285, 0.01684, 1.62296},
    {440, 0.34828, 0.023, 1.74706},
    {445, 0.34806, 0.0298, 1.7826},
    {450, 0.3362, 0.038, 1.77211},
    {455, 0.3187, 0.048, 1.7441},
    {460, 0.2908, 0.06, 1.6692},
    {465, 0.2511, 0.0739, 1.5281},
    {470, 0.19536, 0.09098, 1.28764},
    {475, 0.1421, 0.1126, 1.0419},
    {480, 0.09564, 0.13902, 0.8129501},
    {485, 0.05795001, 0.1693, 0.6162},
    {490, 0.03201, 0.20802, 0.46518},
    {495, 0.0147, 0.2586, 0.3533},
    {500, 0.0049, 0.323, 0.272},
    {505, 0.0024, 0.4073, 0.2123},
    {510, 0.0093, 0.503, 0.1582},
    {515, 0.0291, 0.6082, 0.1117},
    {520, 0.06327, 0.71, 0.07824999},
    {525, 0.1096, 0.7932, 0.05725001},
    {530, 0.1655, 0.862, 0.04216},
    {535, 0.2257499, 0.9148501, 0.02984},
    {540, 0.2904, 0.954, 0.0203},
    {545, 0.3597, 0.9803, 0.0134},
    {550, 0.4334499, 0.9949501, 0.008749999},
    {555, 0.5120501, 1.0, 0.005749999},
    {560, 0.5945, 0.995, 0.0039},
    {565, 0.6784, 0.9786, 0.002749999},
    {570, 0.7621, 0.952, 0.0021},
    {575, 0.8425, 0.9154, 0.0018},
    {580, 0.9163, 0.87, 0.001650001},
    {585, 0.9786, 0.8163, 0.0014},
    {590, 1.0263, 0.757, 0.0011},
    {595, 1.0567, 0.6949, 0.001},
    {600, 1.0622, 0.631, 0.0008},
    {605, 1.0456, 0.5668, 0.0006},
    {610, 1.0026, 0.503, 0.00034},
    {615, 0.9384, 0.4412, 0.00024},
    {620, 0.8544499, 0.381, 0.00019},
    {625, 0.7514, 0.321, 0.0001},
    {630, 0.6424, 0.265, 4.999999e-05},
    {635, 0.5419, 0.217, 3e-05},
    {640, 0.4479, 0.175, 2e-05},
    {645, 0.3608, 0.1382, 1e-05},
    {650, 0.2835, 0.107, 0.0},
    {655, 0.2187, 0.0816, 0.0},
    {660, 0.1649, 0.061, 0.0},
    {665, 0.1212, 0.04458, 0.0},
    {670, 0.0874, 0.032, 0.0},
    {675, 0.0636, 0.0232, 0.0},
    {680, 0.04677, 0.017, 0.0},
    {685, 0.0329, 0.01192, 0.0},
    {690, 0.0227, 0.00821, 0.0},
    {695, 0.01584, 0.005723, 0.0},
    {700, 0.01135916, 0.004102, 0.0},
    {705, 0.008110916, 0.002929, 0.0},
    {710, 0.005790346, 0.002091, 0.0},
    {715, 0.004109457, 0.001484, 0.0},
    {720, 0.002899327, 0.001047, 0.0},
    {725, 0.00204919, 0.00074, 0.0},
    {730, 0.001439971, 0.00052, 0.0},
    {735, 0.0009999493, 0.0003611, 0.0},
    {740, 0.0006900786, 0.0002492, 0.0},
    {745, 0.0004760213, 0.0001719, 0.0},
    {750, 0.0003323011, 0.00012, 0.0},
    {755, 0.0002348261, 8.48e-05, 0.0},
    {760, 0.0001661505, 6e-05, 0.0},
    {765, 0.000117413, 4.24e-05, 0.0},
    {770, 8.307527e-05, 3e-05, 0.0},
    {775, 5.870652e-05, 2.12e-05, 0.0},
    {780, 4.150994e-05, 1.499e-05, 0.0},
    {785, 2.935326e-05, 1.06e-05, 0.0},
    {790, 2.067383e-05, 7.4657e-06, 0.0},
    {795, 1.455977e-05, 5.2578e-06, 0.0},
    {800, 1.025398e-05, 3.7029e-06, 0.0},
    {805, 7.221456e-06, 2.6078e-06, 0.0},
    {810, 5.085868e-06, 1.8366e-06, 0.0},
    {815, 3.581652e-06, 1.2934e-06, 0.0},
    {820, 2.522525e-06, 9.1093e-07, 0.0},
    {825, 1.776509e-06, 6.4153e-07, 0.0},
    {830, 1.251141e-06, 4.5181e-07, 0.0},
};

// Rows of the XYZ to linear sRGB matrix.
double const kXyzToSrgb[3][3] = {
    {3.2406, -1.5372, -0.4986},
    {-0.9689, 1.8758, 0.0415},
    {0.0557, -0.2040, 1.0570},
};

} // namespace

double KVSpectralLuminance::interpolate(std::vector<double> const& wavelengths, std::vector<double> const& values,
                                        double wavelength)
{
    if (values.empty() || wavelengths.size() != values.size())
        return 0.0;
    if (wavelength < wavelengths.front())
        return values.front();
    for (std::size_t i = 0; i + 1 < wavelengths.size(); ++i)
    {
        if (wavelength < wavelengths[i + 1])
        {
            double const u = (wavelength - wavelengths[i]) / (wavelengths[i + 1] - wavelengths[i]);
            return values[i] * (1.0 - u) + values[i + 1] * u;
        }
    }
    return values.back();
}

double KVSpectralLuminance::cieColorMatching(double wavelength, int column)
{
    if (wavelength <= kLambdaMin || wavelength >= kLambdaMax || column < 1 || column > 3)
        return 0.0;
    double u = (wavelength - kLambdaMin) / kCieStep;
    int const row = static_cast<int>(std::floor(u));
    u -= row;
    return kCie1931[row][column] * (1.0 - u) + kCie1931[row + 1][column] * u;
}

osg::Vec3d KVSpectralLuminance::radianceToLuminanceFactors(std::vector<double> const& wavelengths,
                                                           std::vector<double> const& spectrum, double lambdaPower)
{
    double const references[3] = {kLambdaR, kLambdaG, kLambdaB};
    double atReference[3];
    for (int c = 0; c < 3; ++c)
        atReference[c] = interpolate(wavelengths, spectrum, references[c]);

    double k[3] = {0.0, 0.0, 0.0};
    for (int lambda = kLambdaMin; lambda < kLambdaMax; ++lambda)
    {
        double const xyz[3] = {cieColorMatching(lambda, 1), cieColorMatching(lambda, 2), cieColorMatching(lambda, 3)};
        double const value = interpolate(wavelengths, spectrum, lambda);
        for (int c = 0; c < 3; ++c)
        {
            double const bar = kXyzToSrgb[c][0] * xyz[0] + kXyzToSrgb[c][1] * xyz[1] + kXyzToSrgb[c][2] * xyz[2];
            k[c] += bar * value / atReference[c] * std::pow(lambda / references[c], lambdaPower);
        }
    }
    return osg::Vec3d(k[0], k[1], k[2]) * kMaxLuminousEfficacy;
}

} // namespace Kelvor
