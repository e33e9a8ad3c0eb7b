// The run-time atmosphere: what the sky, sun colour and sky terrain read the
// precomputed tables with. These constants are the lookup's own and differ
// from the generator's on purpose: the sun disc is larger, the Mie lobe
// wider, and mu_s_min (the cosine of 120 taken as degrees) sets the sun-angle
// axis that every lookup of the scattering table uses.

#define ATMOSPHERE_LOOKUP
#define ATMOSPHERE_PARAM
#define ATMOSPHERE_ARG

const IrradianceSpectrum solar_irradiance = vec3(1.47399998, 1.85039997, 1.91198003);
const Angle sun_angular_radius = 0.0219999999;
const Length bottom_radius = 6360.0;
const Length top_radius = 6420.0;
const ScatteringSpectrum rayleigh_scattering = vec3(0.00580233941, 0.0135577628, 0.0331000052);
const ScatteringSpectrum mie_scattering = vec3(0.00399600016, 0.00399600016, 0.00399600016);
const Number mie_phase_function_g = 0.7;
const Number mu_s_min = 0.99933197362824111852495381031345;

const vec3 SKY_SPECTRAL_RADIANCE_TO_LUMINANCE = vec3(114974.916437, 71305.954816, 65310.548555);
const vec3 SUN_SPECTRAL_RADIANCE_TO_LUMINANCE = vec3(98242.786222, 69954.398112, 66475.012354);

// Only the table computations read these, and the lookup never runs them:
// they are declared so that the shared functions compile, and never set.
uniform float rayleigh_width;
uniform float rayleigh_exp_term;
uniform float rayleigh_exp_scale;
uniform float rayleigh_linear_term;
uniform float rayleigh_constant_term;
uniform float mie_width;
uniform float mie_exp_term;
uniform float mie_exp_scale;
uniform float mie_linear_term;
uniform float mie_constant_term;
uniform float absorption0_width;
uniform float absorption0_exp_term;
uniform float absorption0_exp_scale;
uniform float absorption0_linear_term;
uniform float absorption0_constant_term;
uniform float absorption1_width;
uniform float absorption1_exp_term;
uniform float absorption1_exp_scale;
uniform float absorption1_linear_term;
uniform float absorption1_constant_term;
uniform vec3 mie_extinction;
uniform vec3 absorption_extinction;
uniform vec3 ground_albedo;
uniform mat3 luminanceFromRadiance;

AtmosphereParameters kvLookupAtmosphere()
{
    DensityProfileLayer none = DensityProfileLayer(0.0, 0.0, 0.0, 0.0, 0.0);
    return AtmosphereParameters(
        solar_irradiance, sun_angular_radius, bottom_radius, top_radius,
        DensityProfile(DensityProfileLayer[2](none, DensityProfileLayer(rayleigh_width, rayleigh_exp_term,
                                                                        rayleigh_exp_scale, rayleigh_linear_term,
                                                                        rayleigh_constant_term))),
        rayleigh_scattering,
        DensityProfile(DensityProfileLayer[2](
            none, DensityProfileLayer(mie_width, mie_exp_term, mie_exp_scale, mie_linear_term, mie_constant_term))),
        mie_scattering, mie_extinction, mie_phase_function_g,
        DensityProfile(DensityProfileLayer[2](
            DensityProfileLayer(absorption0_width, absorption0_exp_term, absorption0_exp_scale,
                                absorption0_linear_term, absorption0_constant_term),
            DensityProfileLayer(absorption1_width, absorption1_exp_term, absorption1_exp_scale,
                                absorption1_linear_term, absorption1_constant_term))),
        absorption_extinction, ground_albedo, mu_s_min);
}
// The shared functions read `atmosphere.<field>`; here that is the record above.
#define atmosphere kvLookupAtmosphere()

// The three tables: texture units, or handles in the atmosphere block where
// the driver has bindless textures.
#if defined(GL_ARB_bindless_texture) && !defined(_USE_NOT_BINDLESS_TEXTURE)
layout(std140, binding = 3) uniform ATMOSPHERE_BLOCK
{
    uvec2 transmittance_texture;
    uvec2 irradiance_texture;
    uvec2 scattering_texture;
};
#define KV_ATMOSPHERE_BINDLESS
#else
uniform sampler2D transmittance_texture;
uniform sampler3D scattering_texture;
uniform sampler2D irradiance_texture;
#endif
