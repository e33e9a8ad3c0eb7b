// Table generator, per order: the scattering of this order in one layer.
// The stored table keeps no phase function (it is applied at lookup), so
// the delta's Rayleigh phase is divided out; alpha (single Mie) is kept.

layout(location = 0) out vec4 delta_multiple_scattering;
layout(location = 1) out vec4 scattering;

uniform mat3 luminance_from_radiance;
uniform sampler2D transmittance_texture;
uniform sampler3D scattering_density_texture;
uniform int layer;

void main()
{
    float nu;
    vec3 delta = ComputeMultipleScatteringTexture(ATMOSPHERE, transmittance_texture, scattering_density_texture,
                                                  vec3(gl_FragCoord.xy, float(layer) + 0.5), nu);
    delta_multiple_scattering = vec4(delta, 1.0);
    scattering = vec4(luminance_from_radiance * delta / RayleighPhaseFunction(nu), 0.0);
}
