// Atmosphere model: clamps that keep rounding errors out of the square roots
// and texture coordinates, and access to the tables.

Number ClampCosine(Number mu)
{
    return clamp(mu, Number(-1.0), Number(1.0));
}

Length ClampDistance(Length d)
{
    return max(d, 0.0 * m);
}

Length ClampRadius(ATMOSPHERE_PARAM Length r)
{
    return clamp(r, atmosphere.bottom_radius, atmosphere.top_radius);
}

Length SafeSqrt(Area a)
{
    return sqrt(max(a, 0.0 * m2));
}

// Texel centres: x in [0, 1] maps to [0.5 / n, 1 - 0.5 / n], so that the
// ends of the range land on the first and last texel exactly.
Number GetTextureCoordFromUnitRange(Number x, int texture_size)
{
    return 0.5 / Number(texture_size) + x * (1.0 - 1.0 / Number(texture_size));
}

Number GetUnitRangeFromTextureCoord(Number u, int texture_size)
{
    return (u - 0.5 / Number(texture_size)) / (1.0 - 1.0 / Number(texture_size));
}

#ifdef ATMOSPHERE_LOOKUP
// The tables are radiance; luminance only under USE_LUMINANCE.
vec3 RadianceToLuminance(vec3 radiance)
{
#ifdef USE_LUMINANCE
    return radiance * SKY_SPECTRAL_RADIANCE_TO_LUMINANCE;
#else
    return radiance;
#endif
}

#ifdef KV_ATMOSPHERE_BINDLESS
#define TEX2D(t) sampler2D(t)
#define TEX3D(t) sampler3D(t)
#else
#define TEX2D(t) t
#define TEX3D(t) t
#endif
#endif
