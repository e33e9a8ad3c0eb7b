// Table generator, per order: ground irradiance from the sky of the previous
// order. The second output is added to the stored irradiance, alpha kept.

layout(location = 0) out vec4 delta_irradiance;
layout(location = 1) out vec4 irradiance;

uniform mat3 luminance_from_radiance;
uniform sampler3D single_rayleigh_scattering_texture;
uniform sampler3D single_mie_scattering_texture;
uniform sampler3D multiple_scattering_texture;
uniform int scattering_order;

void main()
{
    vec3 delta = ComputeIndirectIrradianceTexture(ATMOSPHERE, single_rayleigh_scattering_texture,
                                                  single_mie_scattering_texture, multiple_scattering_texture,
                                                  gl_FragCoord.xy, scattering_order);
    delta_irradiance = vec4(delta, 1.0);
    irradiance = vec4(luminance_from_radiance * delta, 0.0);
}
