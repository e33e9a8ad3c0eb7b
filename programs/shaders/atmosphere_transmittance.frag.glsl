// Table generator, pass 1: transmittance to the top of the atmosphere.

layout(location = 0) out vec4 transmittance;

void main()
{
    transmittance = vec4(ComputeTransmittanceToTopAtmosphereBoundaryTexture(ATMOSPHERE, gl_FragCoord.xy), 1.0);
}
