// Atmosphere model: ground irradiance, direct from the sun and indirect from
// the sky, and its table by (r, mu_s).

#ifndef INDIRECT_IRRADIANCE_SAMPLE_COUNT
#define INDIRECT_IRRADIANCE_SAMPLE_COUNT 32
#endif

// The sun's disc is taken as partly below the horizon near mu_s = 0, with a
// linear average of the cosine factor across it.
IrradianceSpectrum ComputeDirectIrradiance(ATMOSPHERE_PARAM IN(TransmittanceTexture) transmittance_texture, Length r,
                                           Number mu_s)
{
    Number alpha_s = atmosphere.sun_angular_radius / rad;
    Number average_cosine_factor =
        mu_s < -alpha_s ? 0.0 : (mu_s > alpha_s ? mu_s : (mu_s + alpha_s) * (mu_s + alpha_s) / (4.0 * alpha_s));
    return atmosphere.solar_irradiance *
           GetTransmittanceToTopAtmosphereBoundary(ATMOSPHERE_ARG transmittance_texture, r, mu_s) *
           average_cosine_factor;
}

// Integral over the upper hemisphere of the scattered radiance of the given
// order, weighted by the cosine to the zenith.
IrradianceSpectrum ComputeIndirectIrradiance(ATMOSPHERE_PARAM IN(ReducedScatteringTexture) single_rayleigh_scattering_texture,
                                             IN(ReducedScatteringTexture) single_mie_scattering_texture,
                                             IN(ScatteringTexture) multiple_scattering_texture, Length r, Number mu_s,
                                             int scattering_order)
{
    const int SAMPLE_COUNT = INDIRECT_IRRADIANCE_SAMPLE_COUNT;
    const Angle dphi = pi / Number(SAMPLE_COUNT);
    const Angle dtheta = pi / Number(SAMPLE_COUNT);

    IrradianceSpectrum result = IrradianceSpectrum(0.0);
    vec3 omega_s = vec3(sqrt(1.0 - mu_s * mu_s), 0.0, mu_s);
    for (int j = 0; j < SAMPLE_COUNT / 2; ++j)
    {
        Angle theta = (Number(j) + 0.5) * dtheta;
        for (int i = 0; i < 2 * SAMPLE_COUNT; ++i)
        {
            Angle phi = (Number(i) + 0.5) * dphi;
            vec3 omega = vec3(cos(phi) * sin(theta), sin(phi) * sin(theta), cos(theta));
            SolidAngle domega = (dtheta / rad) * (dphi / rad) * sin(theta) * sr;
            Number nu = dot(omega, omega_s);
            result += GetScattering(ATMOSPHERE_ARG single_rayleigh_scattering_texture, single_mie_scattering_texture,
                                    multiple_scattering_texture, r, omega.z, mu_s, nu, false, scattering_order) *
                      omega.z * domega;
        }
    }
    return result;
}

vec2 GetIrradianceTextureUvFromRMuS(ATMOSPHERE_PARAM Length r, Number mu_s)
{
    Number x_r = (r - atmosphere.bottom_radius) / (atmosphere.top_radius - atmosphere.bottom_radius);
    Number x_mu_s = mu_s * 0.5 + 0.5;
    return vec2(GetTextureCoordFromUnitRange(x_mu_s, IRRADIANCE_TEXTURE_WIDTH),
                GetTextureCoordFromUnitRange(x_r, IRRADIANCE_TEXTURE_HEIGHT));
}

void GetRMuSFromIrradianceTextureUv(ATMOSPHERE_PARAM IN(vec2) uv, OUT(Length) r, OUT(Number) mu_s)
{
    Number x_mu_s = GetUnitRangeFromTextureCoord(uv.x, IRRADIANCE_TEXTURE_WIDTH);
    Number x_r = GetUnitRangeFromTextureCoord(uv.y, IRRADIANCE_TEXTURE_HEIGHT);
    r = atmosphere.bottom_radius + x_r * (atmosphere.top_radius - atmosphere.bottom_radius);
    mu_s = ClampCosine(2.0 * x_mu_s - 1.0);
}

const vec2 IRRADIANCE_TEXTURE_SIZE = vec2(IRRADIANCE_TEXTURE_WIDTH, IRRADIANCE_TEXTURE_HEIGHT);

IrradianceSpectrum ComputeDirectIrradianceTexture(ATMOSPHERE_PARAM IN(TransmittanceTexture) transmittance_texture,
                                                  IN(vec2) frag_coord)
{
    Length r;
    Number mu_s;
    GetRMuSFromIrradianceTextureUv(ATMOSPHERE_ARG frag_coord / IRRADIANCE_TEXTURE_SIZE, r, mu_s);
    return ComputeDirectIrradiance(ATMOSPHERE_ARG transmittance_texture, r, mu_s);
}

IrradianceSpectrum ComputeIndirectIrradianceTexture(ATMOSPHERE_PARAM IN(ReducedScatteringTexture) single_rayleigh_scattering_texture,
                                                    IN(ReducedScatteringTexture) single_mie_scattering_texture,
                                                    IN(ScatteringTexture) multiple_scattering_texture,
                                                    IN(vec2) frag_coord, int scattering_order)
{
    Length r;
    Number mu_s;
    GetRMuSFromIrradianceTextureUv(ATMOSPHERE_ARG frag_coord / IRRADIANCE_TEXTURE_SIZE, r, mu_s);
    return ComputeIndirectIrradiance(ATMOSPHERE_ARG single_rayleigh_scattering_texture, single_mie_scattering_texture,
                                     multiple_scattering_texture, r, mu_s, scattering_order);
}

IrradianceSpectrum GetIrradiance(ATMOSPHERE_PARAM IN(IrradianceTexture) irradiance_texture, Length r, Number mu_s)
{
    vec2 uv = GetIrradianceTextureUvFromRMuS(ATMOSPHERE_ARG r, mu_s);
    return IrradianceSpectrum(texture(irradiance_texture, uv));
}
