// Table generator, pass 3: single scattering of one layer. The stored table
// takes Rayleigh in rgb and the red of Mie in alpha.

layout(location = 0) out vec4 delta_rayleigh;
layout(location = 1) out vec4 delta_mie;
layout(location = 2) out vec4 scattering;
layout(location = 3) out vec4 single_mie_scattering;

uniform mat3 luminance_from_radiance;
uniform sampler2D transmittance_texture;
uniform int layer;

void main()
{
    vec3 rayleigh;
    vec3 mie;
    ComputeSingleScatteringTexture(ATMOSPHERE, transmittance_texture, vec3(gl_FragCoord.xy, float(layer) + 0.5),
                                   rayleigh, mie);
    delta_rayleigh = vec4(rayleigh, 1.0);
    delta_mie = vec4(mie, 1.0);
    scattering = vec4(luminance_from_radiance * rayleigh, (luminance_from_radiance * mie).r);
    single_mie_scattering = vec4(luminance_from_radiance * mie, 1.0);
}
