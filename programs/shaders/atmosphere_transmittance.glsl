// Atmosphere model: distances to the boundaries, density profiles and the
// transmittance table. mu is the cosine of the view zenith angle at radius r.

#ifndef TRANSMITTANCE_SAMPLE_COUNT
#define TRANSMITTANCE_SAMPLE_COUNT 500
#endif

Length DistanceToTopAtmosphereBoundary(ATMOSPHERE_PARAM Length r, Number mu)
{
    Area discriminant = r * r * (mu * mu - 1.0) + atmosphere.top_radius * atmosphere.top_radius;
    return ClampDistance(-r * mu + SafeSqrt(discriminant));
}

Length DistanceToBottomAtmosphereBoundary(ATMOSPHERE_PARAM Length r, Number mu)
{
    Area discriminant = r * r * (mu * mu - 1.0) + atmosphere.bottom_radius * atmosphere.bottom_radius;
    return ClampDistance(-r * mu - SafeSqrt(discriminant));
}

bool RayIntersectsGround(ATMOSPHERE_PARAM Length r, Number mu)
{
    return mu < 0.0 && r * r * (mu * mu - 1.0) + atmosphere.bottom_radius * atmosphere.bottom_radius >= 0.0 * m2;
}

Number GetLayerDensity(IN(DensityProfileLayer) layer, Length altitude)
{
    Number density = layer.exp_term * exp(layer.exp_scale * altitude) + layer.linear_term * altitude +
                     layer.constant_term;
    return clamp(density, Number(0.0), Number(1.0));
}

Number GetProfileDensity(IN(DensityProfile) profile, Length altitude)
{
    return altitude < profile.layers[0].width ? GetLayerDensity(profile.layers[0], altitude)
                                              : GetLayerDensity(profile.layers[1], altitude);
}

// Trapezoidal integral of the density along the ray to the top boundary.
Length ComputeOpticalLengthToTopAtmosphereBoundary(ATMOSPHERE_PARAM IN(DensityProfile) profile, Length r, Number mu)
{
    const int SAMPLE_COUNT = TRANSMITTANCE_SAMPLE_COUNT;
    Length dx = DistanceToTopAtmosphereBoundary(ATMOSPHERE_ARG r, mu) / Number(SAMPLE_COUNT);
    Length result = 0.0 * m;
    for (int i = 0; i <= SAMPLE_COUNT; ++i)
    {
        Length d_i = Number(i) * dx;
        Length r_i = sqrt(d_i * d_i + 2.0 * r * mu * d_i + r * r);
        Number y_i = GetProfileDensity(profile, r_i - atmosphere.bottom_radius);
        Number weight_i = i == 0 || i == SAMPLE_COUNT ? 0.5 : 1.0;
        result += y_i * weight_i * dx;
    }
    return result;
}

DimensionlessSpectrum ComputeTransmittanceToTopAtmosphereBoundary(ATMOSPHERE_PARAM Length r, Number mu)
{
    return exp(-(atmosphere.rayleigh_scattering *
                     ComputeOpticalLengthToTopAtmosphereBoundary(ATMOSPHERE_ARG atmosphere.rayleigh_density, r, mu) +
                 atmosphere.mie_extinction *
                     ComputeOpticalLengthToTopAtmosphereBoundary(ATMOSPHERE_ARG atmosphere.mie_density, r, mu) +
                 atmosphere.absorption_extinction *
                     ComputeOpticalLengthToTopAtmosphereBoundary(ATMOSPHERE_ARG atmosphere.absorption_density, r, mu)));
}

// x: distance to the top boundary between its minimum and maximum for this
// r; y: r as the distance to the horizon over its largest value.
vec2 GetTransmittanceTextureUvFromRMu(ATMOSPHERE_PARAM Length r, Number mu)
{
    Length H = sqrt(atmosphere.top_radius * atmosphere.top_radius -
                    atmosphere.bottom_radius * atmosphere.bottom_radius);
    Length rho = SafeSqrt(r * r - atmosphere.bottom_radius * atmosphere.bottom_radius);
    Length d = DistanceToTopAtmosphereBoundary(ATMOSPHERE_ARG r, mu);
    Length d_min = atmosphere.top_radius - r;
    Length d_max = rho + H;
    Number x_mu = (d - d_min) / (d_max - d_min);
    Number x_r = rho / H;
    return vec2(GetTextureCoordFromUnitRange(x_mu, TRANSMITTANCE_TEXTURE_WIDTH),
                GetTextureCoordFromUnitRange(x_r, TRANSMITTANCE_TEXTURE_HEIGHT));
}

void GetRMuFromTransmittanceTextureUv(ATMOSPHERE_PARAM IN(vec2) uv, OUT(Length) r, OUT(Number) mu)
{
    Number x_mu = GetUnitRangeFromTextureCoord(uv.x, TRANSMITTANCE_TEXTURE_WIDTH);
    Number x_r = GetUnitRangeFromTextureCoord(uv.y, TRANSMITTANCE_TEXTURE_HEIGHT);
    Length H = sqrt(atmosphere.top_radius * atmosphere.top_radius -
                    atmosphere.bottom_radius * atmosphere.bottom_radius);
    Length rho = H * x_r;
    r = sqrt(rho * rho + atmosphere.bottom_radius * atmosphere.bottom_radius);
    Length d_min = atmosphere.top_radius - r;
    Length d_max = rho + H;
    Length d = d_min + x_mu * (d_max - d_min);
    mu = d == 0.0 * m ? Number(1.0) : (H * H - rho * rho - d * d) / (2.0 * r * d);
    mu = ClampCosine(mu);
}

DimensionlessSpectrum ComputeTransmittanceToTopAtmosphereBoundaryTexture(ATMOSPHERE_PARAM IN(vec2) frag_coord)
{
    const vec2 TRANSMITTANCE_TEXTURE_SIZE = vec2(TRANSMITTANCE_TEXTURE_WIDTH, TRANSMITTANCE_TEXTURE_HEIGHT);
    Length r;
    Number mu;
    GetRMuFromTransmittanceTextureUv(ATMOSPHERE_ARG frag_coord / TRANSMITTANCE_TEXTURE_SIZE, r, mu);
    return ComputeTransmittanceToTopAtmosphereBoundary(ATMOSPHERE_ARG r, mu);
}

DimensionlessSpectrum GetTransmittanceToTopAtmosphereBoundary(ATMOSPHERE_PARAM IN(TransmittanceTexture) transmittance_texture,
                                                              Length r, Number mu)
{
    vec2 uv = GetTransmittanceTextureUvFromRMu(ATMOSPHERE_ARG r, mu);
    return DimensionlessSpectrum(texture(transmittance_texture, uv));
}

// Between the point at r and the point at distance d along mu: a ratio of
// two transmittances to the boundary, taken downwards when the ray meets the
// ground so that neither crosses the planet.
DimensionlessSpectrum GetTransmittance(ATMOSPHERE_PARAM IN(TransmittanceTexture) transmittance_texture, Length r,
                                       Number mu, Length d, bool ray_r_mu_intersects_ground)
{
    Length r_d = ClampRadius(ATMOSPHERE_ARG sqrt(d * d + 2.0 * r * mu * d + r * r));
    Number mu_d = ClampCosine((r * mu + d) / r_d);
    if (ray_r_mu_intersects_ground)
    {
        return min(GetTransmittanceToTopAtmosphereBoundary(ATMOSPHERE_ARG transmittance_texture, r_d, -mu_d) /
                       GetTransmittanceToTopAtmosphereBoundary(ATMOSPHERE_ARG transmittance_texture, r, -mu),
                   DimensionlessSpectrum(1.0));
    }
    return min(GetTransmittanceToTopAtmosphereBoundary(ATMOSPHERE_ARG transmittance_texture, r, mu) /
                   GetTransmittanceToTopAtmosphereBoundary(ATMOSPHERE_ARG transmittance_texture, r_d, mu_d),
               DimensionlessSpectrum(1.0));
}

// Transmittance to the sun, times the visible fraction of its disc above
// the horizon.
DimensionlessSpectrum GetTransmittanceToSun(ATMOSPHERE_PARAM IN(TransmittanceTexture) transmittance_texture, Length r,
                                            Number mu_s)
{
    Number sin_theta_h = atmosphere.bottom_radius / r;
    Number cos_theta_h = -sqrt(max(1.0 - sin_theta_h * sin_theta_h, 0.0));
    return GetTransmittanceToTopAtmosphereBoundary(ATMOSPHERE_ARG transmittance_texture, r, mu_s) *
           smoothstep(-sin_theta_h * atmosphere.sun_angular_radius / rad,
                      sin_theta_h * atmosphere.sun_angular_radius / rad, mu_s - cos_theta_h);
}
