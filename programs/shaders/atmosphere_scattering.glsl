// Atmosphere model: single scattering, the 4D-to-3D scattering table
// mapping, the scattering density and multiple scattering. mu_s is the
// cosine of the sun zenith angle, nu the cosine of the view-sun angle.

#ifndef SINGLE_SCATTERING_SAMPLE_COUNT
#define SINGLE_SCATTERING_SAMPLE_COUNT 50
#endif
#ifndef SCATTERING_DENSITY_SAMPLE_COUNT
#define SCATTERING_DENSITY_SAMPLE_COUNT 16
#endif
#ifndef MULTIPLE_SCATTERING_SAMPLE_COUNT
#define MULTIPLE_SCATTERING_SAMPLE_COUNT 50
#endif

void ComputeSingleScatteringIntegrand(ATMOSPHERE_PARAM IN(TransmittanceTexture) transmittance_texture, Length r,
                                      Number mu, Number mu_s, Number nu, Length d, bool ray_r_mu_intersects_ground,
                                      OUT(DimensionlessSpectrum) rayleigh, OUT(DimensionlessSpectrum) mie)
{
    Length r_d = ClampRadius(ATMOSPHERE_ARG sqrt(d * d + 2.0 * r * mu * d + r * r));
    Number mu_s_d = ClampCosine((r * mu_s + d * nu) / r_d);
    DimensionlessSpectrum transmittance =
        GetTransmittance(ATMOSPHERE_ARG transmittance_texture, r, mu, d, ray_r_mu_intersects_ground) *
        GetTransmittanceToSun(ATMOSPHERE_ARG transmittance_texture, r_d, mu_s_d);
    rayleigh = transmittance * GetProfileDensity(atmosphere.rayleigh_density, r_d - atmosphere.bottom_radius);
    mie = transmittance * GetProfileDensity(atmosphere.mie_density, r_d - atmosphere.bottom_radius);
}

Length DistanceToNearestAtmosphereBoundary(ATMOSPHERE_PARAM Length r, Number mu, bool ray_r_mu_intersects_ground)
{
    if (ray_r_mu_intersects_ground)
        return DistanceToBottomAtmosphereBoundary(ATMOSPHERE_ARG r, mu);
    return DistanceToTopAtmosphereBoundary(ATMOSPHERE_ARG r, mu);
}

// Without the phase functions: they are applied at lookup, where nu is
// exact rather than interpolated.
void ComputeSingleScattering(ATMOSPHERE_PARAM IN(TransmittanceTexture) transmittance_texture, Length r, Number mu,
                             Number mu_s, Number nu, bool ray_r_mu_intersects_ground,
                             OUT(IrradianceSpectrum) rayleigh, OUT(IrradianceSpectrum) mie)
{
    const int SAMPLE_COUNT = SINGLE_SCATTERING_SAMPLE_COUNT;
    Length dx = DistanceToNearestAtmosphereBoundary(ATMOSPHERE_ARG r, mu, ray_r_mu_intersects_ground) /
                Number(SAMPLE_COUNT);
    DimensionlessSpectrum rayleigh_sum = DimensionlessSpectrum(0.0);
    DimensionlessSpectrum mie_sum = DimensionlessSpectrum(0.0);
    for (int i = 0; i <= SAMPLE_COUNT; ++i)
    {
        Length d_i = Number(i) * dx;
        DimensionlessSpectrum rayleigh_i;
        DimensionlessSpectrum mie_i;
        ComputeSingleScatteringIntegrand(ATMOSPHERE_ARG transmittance_texture, r, mu, mu_s, nu, d_i,
                                         ray_r_mu_intersects_ground, rayleigh_i, mie_i);
        Number weight_i = (i == 0 || i == SAMPLE_COUNT) ? 0.5 : 1.0;
        rayleigh_sum += rayleigh_i * weight_i;
        mie_sum += mie_i * weight_i;
    }
    rayleigh = rayleigh_sum * dx * atmosphere.solar_irradiance * atmosphere.rayleigh_scattering;
    mie = mie_sum * dx * atmosphere.solar_irradiance * atmosphere.mie_scattering;
}

InverseSolidAngle RayleighPhaseFunction(Number nu)
{
    InverseSolidAngle k = 3.0 / (16.0 * PI * sr);
    return k * (1.0 + nu * nu);
}

// Cornette-Shanks.
InverseSolidAngle MiePhaseFunction(Number g, Number nu)
{
    InverseSolidAngle k = 3.0 / (8.0 * PI * sr) * (1.0 - g * g) / (2.0 + g * g);
    return k * (1.0 + nu * nu) / pow(1.0 + g * g - 2.0 * g * nu, 1.5);
}

// u_r: distance to the horizon; u_mu: distance to the ground (lower half)
// or to the top boundary (upper half), so that the horizon falls between
// texels; u_mu_s: distance to the top boundary at the ground, cut off at
// mu_s_min; u_nu: linear.
vec4 GetScatteringTextureUvwzFromRMuMuSNu(ATMOSPHERE_PARAM Length r, Number mu, Number mu_s, Number nu,
                                          bool ray_r_mu_intersects_ground)
{
    Length H = sqrt(atmosphere.top_radius * atmosphere.top_radius -
                    atmosphere.bottom_radius * atmosphere.bottom_radius);
    Length rho = SafeSqrt(r * r - atmosphere.bottom_radius * atmosphere.bottom_radius);
    Number u_r = GetTextureCoordFromUnitRange(rho / H, SCATTERING_TEXTURE_R_SIZE);

    Length r_mu = r * mu;
    Area discriminant = r_mu * r_mu - r * r + atmosphere.bottom_radius * atmosphere.bottom_radius;
    Number u_mu;
    if (ray_r_mu_intersects_ground)
    {
        Length d = -r_mu - SafeSqrt(discriminant);
        Length d_min = r - atmosphere.bottom_radius;
        Length d_max = rho;
        u_mu = 0.5 - 0.5 * GetTextureCoordFromUnitRange(d_max == d_min ? 0.0 : (d - d_min) / (d_max - d_min),
                                                        SCATTERING_TEXTURE_MU_SIZE / 2);
    }
    else
    {
        Length d = -r_mu + SafeSqrt(discriminant + H * H);
        Length d_min = atmosphere.top_radius - r;
        Length d_max = rho + H;
        u_mu = 0.5 + 0.5 * GetTextureCoordFromUnitRange((d - d_min) / (d_max - d_min),
                                                        SCATTERING_TEXTURE_MU_SIZE / 2);
    }

    Length d = DistanceToTopAtmosphereBoundary(ATMOSPHERE_ARG atmosphere.bottom_radius, mu_s);
    Length d_min = atmosphere.top_radius - atmosphere.bottom_radius;
    Length d_max = H;
    Number a = (d - d_min) / (d_max - d_min);
    Length D = DistanceToTopAtmosphereBoundary(ATMOSPHERE_ARG atmosphere.bottom_radius, atmosphere.mu_s_min);
    Number A = (D - d_min) / (d_max - d_min);
    Number u_mu_s = GetTextureCoordFromUnitRange(max(1.0 - a / A, 0.0) / (1.0 + a), SCATTERING_TEXTURE_MU_S_SIZE);

    Number u_nu = (nu + 1.0) / 2.0;
    return vec4(u_nu, u_mu_s, u_mu, u_r);
}

void GetRMuMuSNuFromScatteringTextureUvwz(ATMOSPHERE_PARAM IN(vec4) uvwz, OUT(Length) r, OUT(Number) mu,
                                          OUT(Number) mu_s, OUT(Number) nu, OUT(bool) ray_r_mu_intersects_ground)
{
    Length H = sqrt(atmosphere.top_radius * atmosphere.top_radius -
                    atmosphere.bottom_radius * atmosphere.bottom_radius);
    Length rho = H * GetUnitRangeFromTextureCoord(uvwz.w, SCATTERING_TEXTURE_R_SIZE);
    r = sqrt(rho * rho + atmosphere.bottom_radius * atmosphere.bottom_radius);

    if (uvwz.z < 0.5)
    {
        Length d_min = r - atmosphere.bottom_radius;
        Length d_max = rho;
        Length d = d_min + (d_max - d_min) *
                               GetUnitRangeFromTextureCoord(1.0 - 2.0 * uvwz.z, SCATTERING_TEXTURE_MU_SIZE / 2);
        mu = d == 0.0 * m ? Number(-1.0) : ClampCosine(-(rho * rho + d * d) / (2.0 * r * d));
        ray_r_mu_intersects_ground = true;
    }
    else
    {
        Length d_min = atmosphere.top_radius - r;
        Length d_max = rho + H;
        Length d = d_min + (d_max - d_min) *
                               GetUnitRangeFromTextureCoord(2.0 * uvwz.z - 1.0, SCATTERING_TEXTURE_MU_SIZE / 2);
        mu = d == 0.0 * m ? Number(1.0) : ClampCosine((H * H - rho * rho - d * d) / (2.0 * r * d));
        ray_r_mu_intersects_ground = false;
    }

    Number x_mu_s = GetUnitRangeFromTextureCoord(uvwz.y, SCATTERING_TEXTURE_MU_S_SIZE);
    Length d_min = atmosphere.top_radius - atmosphere.bottom_radius;
    Length d_max = H;
    Length D = DistanceToTopAtmosphereBoundary(ATMOSPHERE_ARG atmosphere.bottom_radius, atmosphere.mu_s_min);
    Number A = (D - d_min) / (d_max - d_min);
    Number a = (A - x_mu_s * A) / (1.0 + x_mu_s * A);
    Length d = d_min + min(a, A) * (d_max - d_min);
    mu_s = d == 0.0 * m ? Number(1.0)
                        : ClampCosine((H * H - d * d) / (2.0 * atmosphere.bottom_radius * d));

    nu = ClampCosine(uvwz.x * 2.0 - 1.0);
}

// The 3D texel: x packs nu (slow) and mu_s (fast). nu is clamped to the
// values the other two angles allow.
void GetRMuMuSNuFromScatteringTextureFragCoord(ATMOSPHERE_PARAM IN(vec3) frag_coord, OUT(Length) r, OUT(Number) mu,
                                               OUT(Number) mu_s, OUT(Number) nu,
                                               OUT(bool) ray_r_mu_intersects_ground)
{
    const vec4 SCATTERING_TEXTURE_SIZE = vec4(SCATTERING_TEXTURE_NU_SIZE - 1, SCATTERING_TEXTURE_MU_S_SIZE,
                                              SCATTERING_TEXTURE_MU_SIZE, SCATTERING_TEXTURE_R_SIZE);
    Number frag_coord_nu = floor(frag_coord.x / Number(SCATTERING_TEXTURE_MU_S_SIZE));
    Number frag_coord_mu_s = mod(frag_coord.x, Number(SCATTERING_TEXTURE_MU_S_SIZE));
    vec4 uvwz = vec4(frag_coord_nu, frag_coord_mu_s, frag_coord.y, frag_coord.z) / SCATTERING_TEXTURE_SIZE;
    GetRMuMuSNuFromScatteringTextureUvwz(ATMOSPHERE_ARG uvwz, r, mu, mu_s, nu, ray_r_mu_intersects_ground);
    nu = clamp(nu, mu * mu_s - sqrt((1.0 - mu * mu) * (1.0 - mu_s * mu_s)),
               mu * mu_s + sqrt((1.0 - mu * mu) * (1.0 - mu_s * mu_s)));
}

void ComputeSingleScatteringTexture(ATMOSPHERE_PARAM IN(TransmittanceTexture) transmittance_texture,
                                    IN(vec3) frag_coord, OUT(IrradianceSpectrum) rayleigh,
                                    OUT(IrradianceSpectrum) mie)
{
    Length r;
    Number mu;
    Number mu_s;
    Number nu;
    bool ray_r_mu_intersects_ground;
    GetRMuMuSNuFromScatteringTextureFragCoord(ATMOSPHERE_ARG frag_coord, r, mu, mu_s, nu,
                                              ray_r_mu_intersects_ground);
    ComputeSingleScattering(ATMOSPHERE_ARG transmittance_texture, r, mu, mu_s, nu, ray_r_mu_intersects_ground,
                            rayleigh, mie);
}

// One table read, interpolated by hand along nu between its two slices.
AbstractSpectrum GetScattering(ATMOSPHERE_PARAM IN(AbstractScatteringTexture) scattering_texture, Length r, Number mu,
                               Number mu_s, Number nu, bool ray_r_mu_intersects_ground)
{
    vec4 uvwz = GetScatteringTextureUvwzFromRMuMuSNu(ATMOSPHERE_ARG r, mu, mu_s, nu, ray_r_mu_intersects_ground);
    Number tex_coord_x = uvwz.x * Number(SCATTERING_TEXTURE_NU_SIZE - 1);
    Number tex_x = floor(tex_coord_x);
    Number lerp = tex_coord_x - tex_x;
    vec3 uvw0 = vec3((tex_x + uvwz.y) / Number(SCATTERING_TEXTURE_NU_SIZE), uvwz.z, uvwz.w);
    vec3 uvw1 = vec3((tex_x + 1.0 + uvwz.y) / Number(SCATTERING_TEXTURE_NU_SIZE), uvwz.z, uvwz.w);
    return AbstractSpectrum(texture(scattering_texture, uvw0) * (1.0 - lerp) +
                            texture(scattering_texture, uvw1) * lerp);
}

// Radiance of the given order arriving along (mu, nu): the single orders
// carry no phase function yet, the multiple ones do.
RadianceSpectrum GetScattering(ATMOSPHERE_PARAM IN(ReducedScatteringTexture) single_rayleigh_scattering_texture,
                               IN(ReducedScatteringTexture) single_mie_scattering_texture,
                               IN(ScatteringTexture) multiple_scattering_texture, Length r, Number mu, Number mu_s,
                               Number nu, bool ray_r_mu_intersects_ground, int scattering_order)
{
    if (scattering_order == 1)
    {
        IrradianceSpectrum rayleigh = GetScattering(ATMOSPHERE_ARG single_rayleigh_scattering_texture, r, mu, mu_s, nu,
                                                    ray_r_mu_intersects_ground);
#ifdef ATMOSPHERE_LOOKUP
        // The lookup has no table of single Mie scattering of its own.
        IrradianceSpectrum mie = IrradianceSpectrum(0.0);
#else
        IrradianceSpectrum mie = GetScattering(ATMOSPHERE_ARG single_mie_scattering_texture, r, mu, mu_s, nu,
                                               ray_r_mu_intersects_ground);
#endif
        return rayleigh * RayleighPhaseFunction(nu) + mie * MiePhaseFunction(atmosphere.mie_phase_function_g, nu);
    }
    return GetScattering(ATMOSPHERE_ARG multiple_scattering_texture, r, mu, mu_s, nu, ray_r_mu_intersects_ground);
}

IrradianceSpectrum GetIrradiance(ATMOSPHERE_PARAM IN(IrradianceTexture) irradiance_texture, Length r, Number mu_s);

// Light scattered towards -omega at one point, from the radiance of the
// previous order arriving from every direction plus the ground's reflection
// of the previous order's irradiance.
RadianceDensitySpectrum ComputeScatteringDensity(ATMOSPHERE_PARAM IN(TransmittanceTexture) transmittance_texture,
                                                 IN(ReducedScatteringTexture) single_rayleigh_scattering_texture,
                                                 IN(ReducedScatteringTexture) single_mie_scattering_texture,
                                                 IN(ScatteringTexture) multiple_scattering_texture,
                                                 IN(IrradianceTexture) irradiance_texture, Length r, Number mu,
                                                 Number mu_s, Number nu, int scattering_order)
{
    vec3 zenith_direction = vec3(0.0, 0.0, 1.0);
    vec3 omega = vec3(sqrt(1.0 - mu * mu), 0.0, mu);
    Number sun_dir_x = omega.x == 0.0 ? 0.0 : (nu - mu * mu_s) / omega.x;
    Number sun_dir_y = sqrt(max(1.0 - sun_dir_x * sun_dir_x - mu_s * mu_s, 0.0));
    vec3 omega_s = vec3(sun_dir_x, sun_dir_y, mu_s);

    const int SAMPLE_COUNT = SCATTERING_DENSITY_SAMPLE_COUNT;
    const Angle dphi = pi / Number(SAMPLE_COUNT);
    const Angle dtheta = pi / Number(SAMPLE_COUNT);
    RadianceDensitySpectrum rayleigh_mie = RadianceDensitySpectrum(0.0);

    for (int l = 0; l < SAMPLE_COUNT; ++l)
    {
        Angle theta = (Number(l) + 0.5) * dtheta;
        Number cos_theta = cos(theta);
        Number sin_theta = sin(theta);
        bool ray_r_theta_intersects_ground = RayIntersectsGround(ATMOSPHERE_ARG r, cos_theta);

        Length distance_to_ground = 0.0 * m;
        DimensionlessSpectrum transmittance_to_ground = DimensionlessSpectrum(0.0);
        DimensionlessSpectrum ground_albedo = DimensionlessSpectrum(0.0);
        if (ray_r_theta_intersects_ground)
        {
            distance_to_ground = DistanceToBottomAtmosphereBoundary(ATMOSPHERE_ARG r, cos_theta);
            transmittance_to_ground =
                GetTransmittance(ATMOSPHERE_ARG transmittance_texture, r, cos_theta, distance_to_ground, true);
            ground_albedo = atmosphere.ground_albedo;
        }

        for (int k = 0; k < 2 * SAMPLE_COUNT; ++k)
        {
            Angle phi = (Number(k) + 0.5) * dphi;
            vec3 omega_i = vec3(cos(phi) * sin_theta, sin(phi) * sin_theta, cos_theta);
            SolidAngle domega_i = (dtheta / rad) * (dphi / rad) * sin(theta) * sr;

            Number nu1 = dot(omega_s, omega_i);
            RadianceSpectrum incident_radiance =
                GetScattering(ATMOSPHERE_ARG single_rayleigh_scattering_texture, single_mie_scattering_texture,
                              multiple_scattering_texture, r, omega_i.z, mu_s, nu1, ray_r_theta_intersects_ground,
                              scattering_order - 1);

            vec3 ground_normal = normalize(zenith_direction * r + omega_i * distance_to_ground);
            IrradianceSpectrum ground_irradiance = GetIrradiance(ATMOSPHERE_ARG irradiance_texture,
                                                                 atmosphere.bottom_radius, dot(ground_normal, omega_s));
            incident_radiance += transmittance_to_ground * ground_albedo * (1.0 / (PI * sr)) * ground_irradiance;

            Number nu2 = dot(omega, omega_i);
            Number rayleigh_density = GetProfileDensity(atmosphere.rayleigh_density, r - atmosphere.bottom_radius);
            Number mie_density = GetProfileDensity(atmosphere.mie_density, r - atmosphere.bottom_radius);
            rayleigh_mie += incident_radiance *
                            (atmosphere.rayleigh_scattering * rayleigh_density * RayleighPhaseFunction(nu2) +
                             atmosphere.mie_scattering * mie_density *
                                 MiePhaseFunction(atmosphere.mie_phase_function_g, nu2)) *
                            domega_i;
        }
    }
    return rayleigh_mie;
}

RadianceSpectrum ComputeMultipleScattering(ATMOSPHERE_PARAM IN(TransmittanceTexture) transmittance_texture,
                                           IN(ScatteringDensityTexture) scattering_density_texture, Length r,
                                           Number mu, Number mu_s, Number nu, bool ray_r_mu_intersects_ground)
{
    const int SAMPLE_COUNT = MULTIPLE_SCATTERING_SAMPLE_COUNT;
    Length dx = DistanceToNearestAtmosphereBoundary(ATMOSPHERE_ARG r, mu, ray_r_mu_intersects_ground) /
                Number(SAMPLE_COUNT);
    RadianceSpectrum rayleigh_mie_sum = RadianceSpectrum(0.0);
    for (int i = 0; i <= SAMPLE_COUNT; ++i)
    {
        Length d_i = Number(i) * dx;
        Length r_i = ClampRadius(ATMOSPHERE_ARG sqrt(d_i * d_i + 2.0 * r * mu * d_i + r * r));
        Number mu_i = ClampCosine((r * mu + d_i) / r_i);
        Number mu_s_i = ClampCosine((r * mu_s + d_i * nu) / r_i);
        RadianceSpectrum rayleigh_mie_i =
            GetScattering(ATMOSPHERE_ARG scattering_density_texture, r_i, mu_i, mu_s_i, nu,
                          ray_r_mu_intersects_ground) *
            GetTransmittance(ATMOSPHERE_ARG transmittance_texture, r, mu, d_i, ray_r_mu_intersects_ground) * dx;
        Number weight_i = (i == 0 || i == SAMPLE_COUNT) ? 0.5 : 1.0;
        rayleigh_mie_sum += rayleigh_mie_i * weight_i;
    }
    return rayleigh_mie_sum;
}

RadianceDensitySpectrum ComputeScatteringDensityTexture(ATMOSPHERE_PARAM IN(TransmittanceTexture) transmittance_texture,
                                                        IN(ReducedScatteringTexture) single_rayleigh_scattering_texture,
                                                        IN(ReducedScatteringTexture) single_mie_scattering_texture,
                                                        IN(ScatteringTexture) multiple_scattering_texture,
                                                        IN(IrradianceTexture) irradiance_texture, IN(vec3) frag_coord,
                                                        int scattering_order)
{
    Length r;
    Number mu;
    Number mu_s;
    Number nu;
    bool ray_r_mu_intersects_ground;
    GetRMuMuSNuFromScatteringTextureFragCoord(ATMOSPHERE_ARG frag_coord, r, mu, mu_s, nu,
                                              ray_r_mu_intersects_ground);
    return ComputeScatteringDensity(ATMOSPHERE_ARG transmittance_texture, single_rayleigh_scattering_texture,
                                    single_mie_scattering_texture, multiple_scattering_texture, irradiance_texture, r,
                                    mu, mu_s, nu, scattering_order);
}

RadianceSpectrum ComputeMultipleScatteringTexture(ATMOSPHERE_PARAM IN(TransmittanceTexture) transmittance_texture,
                                                  IN(ScatteringDensityTexture) scattering_density_texture,
                                                  IN(vec3) frag_coord, OUT(Number) nu)
{
    Length r;
    Number mu;
    Number mu_s;
    bool ray_r_mu_intersects_ground;
    GetRMuMuSNuFromScatteringTextureFragCoord(ATMOSPHERE_ARG frag_coord, r, mu, mu_s, nu,
                                              ray_r_mu_intersects_ground);
    return ComputeMultipleScattering(ATMOSPHERE_ARG transmittance_texture, scattering_density_texture, r, mu, mu_s, nu,
                                     ray_r_mu_intersects_ground);
}
