#pragma once

#include <vector>

namespace Kelvor {

// What the per-wavelength coefficients of the atmosphere are computed from.
struct KVAtmosphereSpectrumInputs
{
    double constantSolarIrradiance = 1.5;
    double rayleigh = 1.24062e-6;
    double mieScaleHeight = 1200.0;
    double mieAngstromAlpha = 0.0;
    double mieAngstromBeta = 5.328e-3;
    double mieSingleScatteringAlbedo = 0.9;
    double groundAlbedo = 0.1;
    bool useConstantSolarSpectrum = false;
    bool useOzone = true;
};

// The atmosphere's coefficients at 48 wavelengths, 360 to 830 nm in steps of
// 10 nm (one row each). Scattering and extinction are per metre.
struct KVAtmosphereSpectra
{
    static constexpr int kMinWavelength = 360;
    static constexpr int kMaxWavelength = 830;
    static constexpr int kWavelengthStep = 10;
    static constexpr int kRows = (kMaxWavelength - kMinWavelength) / kWavelengthStep + 1;
    // Peak ozone number density, per cubic metre: 300 Dobson units spread
    // over the 15 km integral of the ozone profile.
    static constexpr double kMaxOzoneNumberDensity = 300.0 * 2.687e20 / 15000.0;

    std::vector<double> wavelengths;
    std::vector<double> solarIrradiance;
    std::vector<double> rayleighScattering;
    std::vector<double> mieScattering;
    std::vector<double> mieExtinction;
    std::vector<double> absorptionExtinction;
    std::vector<double> groundAlbedo;

    static KVAtmosphereSpectra build(KVAtmosphereSpectrumInputs const& inputs);

    // Measured tables, one value per row: solar irradiance at the top of the
    // atmosphere (W m^-2 nm^-1) and the ozone absorption cross section (m^2).
    static double const kSolarIrradiance[kRows];
    static double const kOzoneCrossSection[kRows];

    // The row of a wavelength of the table (truncating).
    static int rowOf(int wavelength) { return (wavelength - kMinWavelength) / kWavelengthStep; }
};

} // namespace Kelvor
