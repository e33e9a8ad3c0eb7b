// Atmosphere lookup: sky radiance along a ray or to a point, and the sun and
// sky irradiance of a surface, read from the precomputed tables. Positions
// are relative to the planet's centre, in kilometres. The scattering table
// is the combined form: Rayleigh and multiple scattering in rgb, the red of
// single Mie scattering in alpha.

// The full single Mie scattering, rebuilt from its red channel with the
// ratio of the Rayleigh channels.
vec3 GetExtrapolatedSingleMieScattering(IN(vec4) scattering)
{
    if (scattering.r <= 0.0)
        return vec3(0.0);
    return scattering.rgb * scattering.a / scattering.r * (rayleigh_scattering.r / mie_scattering.r) *
           (mie_scattering / rayleigh_scattering);
}

IrradianceSpectrum GetCombinedScattering(IN(ScatteringTexture) scattering_texture, Length r, Number mu, Number mu_s,
                                         Number nu, bool ray_r_mu_intersects_ground,
                                         OUT(IrradianceSpectrum) single_mie_scattering)
{
    vec4 uvwz = GetScatteringTextureUvwzFromRMuMuSNu(r, mu, mu_s, nu, ray_r_mu_intersects_ground);
    Number tex_coord_x = uvwz.x * Number(SCATTERING_TEXTURE_NU_SIZE - 1);
    Number tex_x = floor(tex_coord_x);
    Number lerp = tex_coord_x - tex_x;
    vec3 uvw0 = vec3((tex_x + uvwz.y) / Number(SCATTERING_TEXTURE_NU_SIZE), uvwz.z, uvwz.w);
    vec3 uvw1 = vec3((tex_x + 1.0 + uvwz.y) / Number(SCATTERING_TEXTURE_NU_SIZE), uvwz.z, uvwz.w);
    vec4 combined_scattering =
        texture(scattering_texture, uvw0) * (1.0 - lerp) + texture(scattering_texture, uvw1) * lerp;
    single_mie_scattering = GetExtrapolatedSingleMieScattering(combined_scattering);
    return IrradianceSpectrum(combined_scattering);
}

RadianceSpectrum GetSkyRadiance(IN(TransmittanceTexture) transmittance_texture,
                                IN(ScatteringTexture) scattering_texture, Position camera, IN(Direction) view_ray,
                                Length shadow_length, IN(Direction) sun_direction,
                                OUT(DimensionlessSpectrum) transmittance)
{
    // A camera in space looks from where its ray enters the atmosphere.
    Length r = length(camera);
    Length rmu = dot(camera, view_ray);
    Length distance_to_top_atmosphere_boundary = -rmu - sqrt(rmu * rmu - r * r + top_radius * top_radius);
    if (distance_to_top_atmosphere_boundary > 0.0 * m)
    {
        camera = camera + view_ray * distance_to_top_atmosphere_boundary;
        r = top_radius;
        rmu += distance_to_top_atmosphere_boundary;
    }
    else if (r > top_radius)
    {
        transmittance = DimensionlessSpectrum(1.0);
        return RadianceSpectrum(0.0 * watt_per_square_meter_per_sr_per_nm);
    }

    Number mu = rmu / r;
    Number mu_s = dot(camera, sun_direction) / r;
    Number nu = dot(view_ray, sun_direction);
    bool ray_r_mu_intersects_ground = RayIntersectsGround(r, mu);

    transmittance = ray_r_mu_intersects_ground
                        ? DimensionlessSpectrum(0.0)
                        : GetTransmittanceToTopAtmosphereBoundary(transmittance_texture, r, mu);
    IrradianceSpectrum single_mie_scattering;
    IrradianceSpectrum scattering;
    if (shadow_length == 0.0 * m)
    {
        scattering = GetCombinedScattering(scattering_texture, r, mu, mu_s, nu, ray_r_mu_intersects_ground,
                                           single_mie_scattering);
    }
    else
    {
        // Light shafts: the scattering between the camera and the end of
        // the shadow is left out.
        Length d = shadow_length;
        Length r_p = ClampRadius(sqrt(d * d + 2.0 * r * mu * d + r * r));
        Number mu_p = (r * mu + d) / r_p;
        Number mu_s_p = (r * mu_s + d * nu) / r_p;
        scattering = GetCombinedScattering(scattering_texture, r_p, mu_p, mu_s_p, nu, ray_r_mu_intersects_ground,
                                           single_mie_scattering);
        DimensionlessSpectrum shadow_transmittance =
            GetTransmittance(transmittance_texture, r, mu, shadow_length, ray_r_mu_intersects_ground);
        scattering = scattering * shadow_transmittance;
        single_mie_scattering = single_mie_scattering * shadow_transmittance;
    }
    return scattering * RayleighPhaseFunction(nu) +
           single_mie_scattering * MiePhaseFunction(mie_phase_function_g, nu);
}

RadianceSpectrum GetSkyRadianceToPoint(IN(TransmittanceTexture) transmittance_texture,
                                       IN(ScatteringTexture) scattering_texture, Position camera, IN(Position) point,
                                       Length shadow_length, IN(Direction) sun_direction,
                                       OUT(DimensionlessSpectrum) transmittance)
{
    Direction view_ray = normalize(point - camera);
    Length r = length(camera);
    Length rmu = dot(camera, view_ray);
    Length distance_to_top_atmosphere_boundary = -rmu - sqrt(rmu * rmu - r * r + top_radius * top_radius);
    if (distance_to_top_atmosphere_boundary > 0.0 * m)
    {
        camera = camera + view_ray * distance_to_top_atmosphere_boundary;
        r = top_radius;
        rmu += distance_to_top_atmosphere_boundary;
    }

    // The in-scatter to the point: that to infinity from the camera, less
    // that to infinity from the point, attenuated between them.
    Number mu = rmu / r;
    Number mu_s = dot(camera, sun_direction) / r;
    Number nu = dot(view_ray, sun_direction);
    Length d = length(point - camera);
    bool ray_r_mu_intersects_ground = RayIntersectsGround(r, mu);

    transmittance = GetTransmittance(transmittance_texture, r, mu, d, ray_r_mu_intersects_ground);

    IrradianceSpectrum single_mie_scattering;
    IrradianceSpectrum scattering =
        GetCombinedScattering(scattering_texture, r, mu, mu_s, nu, ray_r_mu_intersects_ground, single_mie_scattering);

    d = max(d - shadow_length, 0.0 * m);
    Length r_p = ClampRadius(sqrt(d * d + 2.0 * r * mu * d + r * r));
    Number mu_p = (r * mu + d) / r_p;
    Number mu_s_p = (r * mu_s + d * nu) / r_p;

    IrradianceSpectrum single_mie_scattering_p;
    IrradianceSpectrum scattering_p = GetCombinedScattering(scattering_texture, r_p, mu_p, mu_s_p, nu,
                                                            ray_r_mu_intersects_ground, single_mie_scattering_p);

    DimensionlessSpectrum shadow_transmittance = transmittance;
    if (shadow_length > 0.0 * m)
        shadow_transmittance = GetTransmittance(transmittance_texture, r, mu, d, ray_r_mu_intersects_ground);
    scattering = scattering - shadow_transmittance * scattering_p;
    single_mie_scattering = single_mie_scattering - shadow_transmittance * single_mie_scattering_p;
    single_mie_scattering = GetExtrapolatedSingleMieScattering(vec4(scattering, single_mie_scattering.r));

    // The Mie difference is unstable with the sun below the horizon; fade it.
    single_mie_scattering = single_mie_scattering * smoothstep(Number(0.0), Number(0.01), mu_s);

    return scattering * RayleighPhaseFunction(nu) +
           single_mie_scattering * MiePhaseFunction(mie_phase_function_g, nu);
}

IrradianceSpectrum GetSunAndSkyIrradiance(IN(TransmittanceTexture) transmittance_texture,
                                          IN(IrradianceTexture) irradiance_texture, IN(Position) point,
                                          IN(Direction) normal, IN(Direction) sun_direction,
                                          OUT(IrradianceSpectrum) sky_irradiance)
{
    Length r = length(point);
    Number mu_s = dot(point, sun_direction) / r;

    // The sky's share: the table is for a horizontal surface; a tilted one
    // sees that much less of the sky dome.
    sky_irradiance = GetIrradiance(irradiance_texture, r, mu_s) * (1.0 + dot(normal, point) / r) * 0.5;

    return solar_irradiance * GetTransmittanceToSun(transmittance_texture, r, mu_s) *
           max(dot(normal, sun_direction), 0.0);
}

// The entry points of the sky and surface programs: the same, on the bound
// tables.
RadianceSpectrum GetSolarRadiance()
{
    return solar_irradiance / (PI * sun_angular_radius * sun_angular_radius);
}

RadianceSpectrum GetSkyRadiance(Position camera, Direction view_ray, Length shadow_length, Direction sun_direction,
                                out DimensionlessSpectrum transmittance)
{
    return RadianceToLuminance(GetSkyRadiance(TEX2D(transmittance_texture), TEX3D(scattering_texture), camera, view_ray,
                                              shadow_length, sun_direction, transmittance));
}

RadianceSpectrum GetSkyRadianceToPoint(Position camera, Position point, Length shadow_length, Direction sun_direction,
                                       out DimensionlessSpectrum transmittance)
{
    return RadianceToLuminance(GetSkyRadianceToPoint(TEX2D(transmittance_texture), TEX3D(scattering_texture), camera,
                                                     point, shadow_length, sun_direction, transmittance));
}

IrradianceSpectrum GetSunAndSkyIrradiance(Position p, Direction normal, Direction sun_direction,
                                          out IrradianceSpectrum sky_irradiance)
{
    IrradianceSpectrum sun_irradiance = GetSunAndSkyIrradiance(TEX2D(transmittance_texture), TEX2D(irradiance_texture),
                                                               p, normal, sun_direction, sky_irradiance);
    sky_irradiance = RadianceToLuminance(sky_irradiance);
    return RadianceToLuminance(sun_irradiance);
}
