// Lighting helpers shared by the surface and the reflected-surface fragment
// shaders. Everything is computed in linear space; the colour written is
// tone-mapped and gamma-encoded here, as no later pass does it for surfaces.

#define MPI 3.14159265359

uniform vec3 camPos_W;

// Colours are authored gamma-encoded.
vec3 decodeGamma(vec3 c)
{
    return pow(c, vec3(2.2));
}

vec3 encodeGamma(vec3 c)
{
    // pow of a negative base is undefined; a negative colour means black.
    return pow(max(c, vec3(0.0)), vec3(1.0 / 2.2));
}

// The usual rational fit of the ACES filmic curve.
vec3 toneMapACES(vec3 c)
{
    return (c * (2.51 * c + 0.03)) / (c * (2.43 * c + 0.59) + 0.14);
}

vec3 lambertLight(vec3 albedo, vec3 normal, vec3 lightDir, float lightIntensity)
{
    return albedo / MPI * lightIntensity * max(dot(normal, lightDir), 0.0);
}

// The 3.5 lifts the ambient term to match the scale of the direct light.
vec3 simpleAmbient(vec3 albedo)
{
    return AmbientIntensity_F * albedo / MPI * 3.5;
}

#ifdef _USE_WEATHER_SNOW
uniform sampler2D Snow_Normal_Tx;

// Snow settles on what faces up (world z is up): it whitens the albedo and
// roughens the normal in proportion.
void applySnow(inout vec3 albedo, inout vec3 normal, vec3 posW)
{
    float up = max(normal.z, 0.0);
    albedo = mix(albedo, vec3(0.82), up * 0.8);
    vec3 snowNormal = texture(Snow_Normal_Tx, posW.xy * 0.00005).xyz * 2.0 - 1.0;
    snowNormal.z *= 0.75;
    normal = normalize(mix(normal, snowNormal, up));
}
#endif

#ifdef _USE_ATMOSPHERE
uniform sampler2D scatteringTexture;

// By day the light takes the sky's colour at the camera. A sun at or below
// z = -0.1 is night: the lights are out and only the ambient term remains,
// without the ambient colour.
vec3 applyAtmosphere(vec3 color, vec3 ambient)
{
    if (DirLightDir_V3.z > -0.1)
        return color * texture(scatteringTexture, vec2(0.0)).rgb;
    return ambient;
}
#endif

#ifdef _USE_FOG
in vec3 pos_V;
uniform vec3 FogColor;
uniform float FogDensity;

vec3 applyFog(vec3 color, vec3 posV)
{
    return mix(FogColor, color, exp(-length(posV) * FogDensity));
}
#endif

// The end of every lit colour: atmosphere, fog, then tone mapping and gamma,
// so that what is written is display-ready. ambient is the ambient term
// alone, which is all that remains at night.
vec3 finishColor(vec3 color, vec3 ambient)
{
#ifdef _USE_ATMOSPHERE
    color = applyAtmosphere(color, ambient);
#endif
#ifdef _USE_FOG
    color = applyFog(color, pos_V);
#endif
    return encodeGamma(toneMapACES(color));
}
