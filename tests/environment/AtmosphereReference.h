#pragma once

// An independent CPU evaluation of the atmosphere the table generator
// computes (same parameters, kilometres), integrated finely in double
// precision: what a texel of the generated tables should hold.

#include <algorithm>
#include <array>
#include <cmath>

namespace Kelvor {
namespace atmosphereref {

using Vec3 = std::array<double, 3>;

constexpr double kBottom = 6360.0;
constexpr double kTop = 6420.0;
constexpr Vec3 kSolarIrradiance = {1.474, 1.8504, 1.91198};
constexpr double kSunAngularRadius = 0.004675;
constexpr Vec3 kRayleighScattering = {0.005802, 0.013558, 0.0331};
constexpr double kMieScattering = 0.003996;
constexpr double kMieExtinction = 0.00444;
constexpr Vec3 kAbsorptionExtinction = {0.00065, 0.001881, 0.000085};
constexpr double kMuSMin = -0.207912;

inline double rayleighDensity(double h) { return std::exp(-0.125 * h); }
inline double mieDensity(double h) { return std::exp(-0.833333 * h); }
inline double ozoneDensity(double h)
{
    double const d = h < 25.0 ? 0.066667 * h - 0.666667 : -0.066667 * h + 2.666667;
    return std::clamp(d, 0.0, 1.0);
}

inline double distanceToBottom(double r, double mu)
{
    return std::max(0.0, -r * mu - std::sqrt(std::max(0.0, r * r * (mu * mu - 1.0) + kBottom * kBottom)));
}

inline bool rayMeetsGround(double r, double mu)
{
    return mu < 0.0 && r * r * (mu * mu - 1.0) + kBottom * kBottom >= 0.0;
}

inline double horizonLength() { return std::sqrt(kTop * kTop - kBottom * kBottom); }

inline double distanceToTop(double r, double mu)
{
    return std::max(0.0, -r * mu + std::sqrt(std::max(0.0, r * r * (mu * mu - 1.0) + kTop * kTop)));
}

// Transmittance along the straight segment of length d from radius r in
// direction mu, by the midpoint rule.
inline Vec3 segmentTransmittance(double r, double mu, double d, int samples = 2000)
{
    double rayleigh = 0.0, mie = 0.0, ozone = 0.0;
    double const dx = d / samples;
    for (int i = 0; i < samples; ++i)
    {
        double const t = (i + 0.5) * dx;
        double const h = std::sqrt(t * t + 2.0 * r * mu * t + r * r) - kBottom;
        rayleigh += rayleighDensity(h) * dx;
        mie += mieDensity(h) * dx;
        ozone += ozoneDensity(h) * dx;
    }
    Vec3 result;
    for (int c = 0; c < 3; ++c)
        result[c] = std::exp(-(kRayleighScattering[c] * rayleigh + kMieExtinction * mie +
                               kAbsorptionExtinction[c] * ozone));
    return result;
}

inline Vec3 transmittanceToTop(double r, double mu, int samples = 2000)
{
    return segmentTransmittance(r, mu, distanceToTop(r, mu), samples);
}

inline double smoothstep(double a, double b, double x)
{
    double const t = std::clamp((x - a) / (b - a), 0.0, 1.0);
    return t * t * (3.0 - 2.0 * t);
}

// Inverse of the texel-centre mapping: texel i of n stands for i / (n - 1).
inline double unitFromTexel(double i, int n) { return i / (n - 1); }
inline double unitFromCoord(double u, int n) { return (u - 0.5 / n) / (1.0 - 1.0 / n); }

// (r, mu) of transmittance texel (x, y) of 256 x 64.
inline void transmittanceTexel(int x, int y, double& r, double& mu)
{
    double const H = horizonLength();
    double const rho = H * unitFromTexel(y, 64);
    r = std::sqrt(rho * rho + kBottom * kBottom);
    double const dMin = kTop - r;
    double const dMax = rho + H;
    double const d = dMin + unitFromTexel(x, 256) * (dMax - dMin);
    mu = d == 0.0 ? 1.0 : std::clamp((H * H - rho * rho - d * d) / (2.0 * r * d), -1.0, 1.0);
}

// (r, mu, mu_s, nu) of scattering texel (x, y, z): rays that meet the ground
// in the lower half of y, the others in the upper half.
inline void scatteringTexel(int x, int y, int z, double& r, double& mu, double& muS, double& nu)
{
    double const H = horizonLength();
    double const rho = H * unitFromTexel(z, 32);
    r = std::sqrt(rho * rho + kBottom * kBottom);
    double const wz = (y + 0.5) / 128.0;
    double dMin, dMax, d;
    if (wz < 0.5)
    {
        dMin = r - kBottom;
        dMax = rho;
        d = dMin + (dMax - dMin) * unitFromCoord(1.0 - 2.0 * wz, 64);
        mu = d == 0.0 ? -1.0 : std::clamp(-(rho * rho + d * d) / (2.0 * r * d), -1.0, 1.0);
    }
    else
    {
        dMin = kTop - r;
        dMax = rho + H;
        d = dMin + (dMax - dMin) * unitFromCoord(2.0 * wz - 1.0, 64);
        mu = d == 0.0 ? 1.0 : std::clamp((H * H - rho * rho - d * d) / (2.0 * r * d), -1.0, 1.0);
    }

    double const xMuS = unitFromTexel(x % 32, 32);
    dMin = kTop - kBottom;
    dMax = H;
    double const A = (distanceToTop(kBottom, kMuSMin) - dMin) / (dMax - dMin);
    double const a = (A - xMuS * A) / (1.0 + xMuS * A);
    d = dMin + std::min(a, A) * (dMax - dMin);
    muS = d == 0.0 ? 1.0 : std::clamp((H * H - d * d) / (2.0 * kBottom * d), -1.0, 1.0);

    nu = std::clamp((x / 32) / 7.0 * 2.0 - 1.0, -1.0, 1.0);
    double const spread = std::sqrt((1.0 - mu * mu) * (1.0 - muS * muS));
    nu = std::clamp(nu, mu * muS - spread, mu * muS + spread);
}

// Single Mie scattering (without phase function) towards a camera at r
// looking along mu, for a sun at mu_s, nu, up to the ground or the top.
inline Vec3 singleMie(double r, double mu, double muS, double nu, int samples = 400)
{
    double const length = rayMeetsGround(r, mu) ? distanceToBottom(r, mu) : distanceToTop(r, mu);
    double const dx = length / samples;
    Vec3 sum = {0.0, 0.0, 0.0};
    for (int i = 0; i < samples; ++i)
    {
        double const t = (i + 0.5) * dx;
        double const rT = std::sqrt(t * t + 2.0 * r * mu * t + r * r);
        double const muST = std::clamp((r * muS + t * nu) / rT, -1.0, 1.0);
        Vec3 const toCamera = segmentTransmittance(r, mu, t, 200);
        Vec3 const toSun = transmittanceToTop(rT, muST, 200);
        double const sinH = kBottom / rT;
        double const cosH = -std::sqrt(std::max(0.0, 1.0 - sinH * sinH));
        double const visible = smoothstep(-sinH * kSunAngularRadius, sinH * kSunAngularRadius, muST - cosH);
        double const density = mieDensity(rT - kBottom);
        for (int c = 0; c < 3; ++c)
            sum[c] += toCamera[c] * toSun[c] * visible * density * dx;
    }
    for (int c = 0; c < 3; ++c)
        sum[c] *= kSolarIrradiance[c] * kMieScattering;
    return sum;
}

} // namespace atmosphereref
} // namespace Kelvor
