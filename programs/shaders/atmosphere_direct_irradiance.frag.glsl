// Table generator, pass 2: ground irradiance straight from the sun. The
// stored irradiance starts from zero: it holds only the sky's light.

layout(location = 0) out vec4 delta_irradiance;
layout(location = 1) out vec4 irradiance;

uniform sampler2D transmittance_texture;

void main()
{
    delta_irradiance = vec4(ComputeDirectIrradianceTexture(ATMOSPHERE, transmittance_texture, gl_FragCoord.xy), 1.0);
    irradiance = vec4(0.0, 0.0, 0.0, 1.0);
}
