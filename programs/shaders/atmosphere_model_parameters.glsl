// The table generator's atmosphere. The functions take it as their first
// argument, as the passes hand it on.

#define ATMOSPHERE_PARAM IN(AtmosphereParameters) atmosphere,
#define ATMOSPHERE_ARG atmosphere,

const AtmosphereParameters ATMOSPHERE = AtmosphereParameters(
    vec3(1.474, 1.8504, 1.91198),
    0.004675,
    6360.0,
    6420.0,
    DensityProfile(DensityProfileLayer[2](DensityProfileLayer(0.0, 0.0, 0.0, 0.0, 0.0),
                                          DensityProfileLayer(0.0, 1.0, -0.125, 0.0, 0.0))),
    vec3(0.005802, 0.013558, 0.0331),
    DensityProfile(DensityProfileLayer[2](DensityProfileLayer(0.0, 0.0, 0.0, 0.0, 0.0),
                                          DensityProfileLayer(0.0, 1.0, -0.833333, 0.0, 0.0))),
    vec3(0.003996, 0.003996, 0.003996),
    vec3(0.00444, 0.00444, 0.00444),
    0.8,
    // Ozone: a tent rising to 25 km and falling to zero at 40 km.
    DensityProfile(DensityProfileLayer[2](DensityProfileLayer(25.0, 0.0, 0.0, 0.066667, -0.666667),
                                          DensityProfileLayer(0.0, 0.0, 0.0, -0.066667, 2.666667))),
    vec3(0.00065, 0.001881, 0.000085),
    vec3(0.1, 0.1, 0.1),
    -0.207912);

const vec3 SKY_SPECTRAL_RADIANCE_TO_LUMINANCE = vec3(114974.916437, 71305.954816, 65310.548555);
const vec3 SUN_SPECTRAL_RADIANCE_TO_LUMINANCE = vec3(98242.786222, 69954.398112, 66475.012354);
