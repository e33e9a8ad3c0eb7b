// The sky as seen from the centre of the cube map in one direction: the
// scattered light of the atmosphere, the sun's disc by day and the moon's by
// night, stars, and the ground below the horizon (the planet, or a textured
// plane with _USE_SKY_TERRAIN); then fog and rain darken it as they do the
// scene.

in vec3 gs_WorldPos;

uniform vec3 camPos_W;
// The star noise and the ground layers: handles where the driver has
// bindless textures, texture units where it does not.
#ifndef _USE_NOT_BINDLESS_TEXTURE
layout(bindless_sampler) uniform sampler2D starNoise;
#else
uniform sampler2D starNoise;
#endif
#ifdef _USE_FOG
uniform vec3 FogColor;
uniform float FogDensity;
#endif
#ifdef _USE_WEATHER_RAIN
uniform float RainIntensity;
#endif
#ifdef _USE_WEATHER_SNOW
uniform sampler2D Snow_Normal_Tx;
#endif
#ifdef _USE_SKY_TERRAIN
uniform float terrainHeight;
#ifndef _USE_NOT_BINDLESS_TEXTURE
layout(bindless_sampler) uniform sampler2D s_repNoise;
layout(bindless_sampler) uniform sampler2DArray terrainTextureArray;
#else
uniform sampler2D s_repNoise;
uniform sampler2DArray terrainTextureArray;
#endif
#endif
#ifdef _USE_ATMOSPHERE
uniform sampler2D scatteringTexture;
#endif

layout(location = 0) out vec4 PS_OUT_Color;

// The sun's disc: (tan, cos) of its angular radius.
const vec2 sun_size = vec2(0.02200355, 0.99975801);
const vec3 kGroundAlbedo = vec3(100.0 / 255.0);

// Fog thins by distance in metres; the sky is taken to be this far away.
const float kSkyFogDistance = 9500000.0;

float planeIntersect(vec3 ro, vec3 rd, vec4 p)
{
    return -(dot(ro, p.xyz) + p.w) / dot(rd, p.xyz);
}

#ifdef _USE_SKY_TERRAIN
// A tiled texture without visible repetition: the tile is offset by a
// noise-chosen amount, and two neighbouring offsets are blended.
vec3 textureNoTile(vec2 uv)
{
    float k = texture(s_repNoise, 0.005 * uv).x;
    vec2 duvdx = dFdx(uv);
    vec2 duvdy = dFdy(uv);
    float l = k * 8.0;
    float f = fract(l);
    float ia = floor(l);
    float ib = ia + 1.0;
    vec2 offa = sin(vec2(3.0, 7.0) * ia);
    vec2 offb = sin(vec2(3.0, 7.0) * ib);
    vec3 cola = textureGrad(terrainTextureArray, vec3(uv + offa, 0.0), duvdx, duvdy).rgb;
    vec3 colb = textureGrad(terrainTextureArray, vec3(uv + offb, 0.0), duvdx, duvdy).rgb;
    vec3 diff = cola - colb;
    return mix(cola, colb, smoothstep(0.2, 0.8, f - 0.1 * (diff.x + diff.y + diff.z)));
}

vec3 ACESFilm(vec3 x)
{
    return clamp((x * (2.51 * x + 0.03)) / (x * (2.43 * x + 0.59) + 0.14), 0.0, 1.0);
}

// The ground plane seen along `view`, lit like a surface of the scene and
// seen through the air up to it.
vec3 skyTerrain(vec3 radiance, vec3 view, vec3 skyCamera, float lightIntensity)
{
    vec4 plane = vec4(0.0, 0.0, 1.0, terrainHeight);
    float t = planeIntersect(camPos_W, view, plane);
    if (!(t > 0.0 && camPos_W.z >= terrainHeight))
        return radiance;

    vec3 point = camPos_W + view * t;
    vec3 color = pow(textureNoTile(point.xy * 0.0001), vec3(2.2));
    vec3 normal = vec3(0.0, 0.0, 1.0);
#ifdef _USE_WEATHER_SNOW
    color = mix(color, vec3(0.82), 0.8);
    vec3 snowNormal = texture(Snow_Normal_Tx, point.xy * 0.00005).xyz * 2.0 - 1.0;
    snowNormal.z *= 0.75;
    normal = normalize(snowNormal);
#endif
    vec3 direct = color / PI * 0.4 * lightIntensity * max(dot(normal, DirLightDir_V3), 0.0) * LightColor;
    vec3 ambient = AmbientIntensity_F * color / PI * 3.5;
    vec3 lit = direct + ambient * AmbientColor;
#ifdef _USE_ATMOSPHERE
    lit = sunIsUp(DirLightDir_V3) ? lit * texture(scatteringTexture, vec2(0.0)).rgb : ambient;
#endif
#ifdef _USE_FOG
    lit = mix(FogColor, lit, exp(-t * FogDensity));
#endif
    lit = pow(ACESFilm(lit), vec3(1.0 / 2.2));

    float airLight = LightIntensity_F;
#ifdef _USE_WEATHER_RAIN
    airLight *= 0.4 + 0.6 * (1.0 - RainIntensity);
#endif
    float t2 = planeIntersect(skyCamera, view, plane);
    vec3 transmittance;
    vec3 inScatter = GetSkyRadianceToPoint(skyCamera - earth_center, skyCamera + view * t2 - earth_center, 0.0,
                                           DirLightDir_V3, transmittance);
    inScatter = pow(skyTone(inScatter, airLight), vec3(2.2));
    return lit * transmittance + inScatter;
}
#endif

void main()
{
    vec3 view = normalize(gs_WorldPos);
    // The sky is drawn for a viewer 300 m up wherever the camera is, so the
    // lookup never leaves the atmosphere.
    vec3 skyCamera = normalize(camPos_W);
    skyCamera.z = 0.3;

    float lightIntensity = LightIntensity_F;
#ifdef _USE_WEATHER_RAIN
    lightIntensity *= 0.6 + 0.4 * (1.0 - RainIntensity);
#endif

    vec3 transmittance;
    vec3 radiance = GetSkyRadiance(skyCamera - earth_center, view, 0.0, DirLightDir_V3, transmittance);

    if (sunIsUp(DirLightDir_V3)) {
        float d = max(dot(view, DirLightDir_V3) - sun_size.y, 0.0);
        radiance += transmittance * GetSolarRadiance() * pow(d, 2.2) * 300000.0;
    } else {
        // The moon stands opposite the sun.
        float d = max(dot(view, -DirLightDir_V3) - sun_size.y, 0.0);
        radiance += pow(d, 1.8) * 3000000.0;
    }
    float star = smoothstep(0.75, 1.0, texture(starNoise, (view.xy + 1.0) * 20000.0).r);
    radiance += pow(star, 0.1);

#ifndef _USE_SKY_TERRAIN
    vec3 p = skyCamera - earth_center;
    float v = dot(p, view);
    float rayDistance2 = dot(p, p) - v * v;
    float groundDistance = -v - sqrt(6360.0 * 6360.0 - rayDistance2);
    if (groundDistance > 0.0) {
        vec3 point = skyCamera + view * groundDistance;
        vec3 normal = normalize(point - earth_center);
        vec3 skyIrradiance;
        vec3 sunIrradiance = GetSunAndSkyIrradiance(point - earth_center, normal, DirLightDir_V3, skyIrradiance);
        vec3 groundRadiance = kGroundAlbedo * vec3(0.3883, 0.3156, 0.3608) / PI * (sunIrradiance + skyIrradiance);
        vec3 inScatter = GetSkyRadianceToPoint(skyCamera - earth_center, point - earth_center, 0.0, DirLightDir_V3,
                                               transmittance);
        radiance = groundRadiance * transmittance + inScatter;
    }
#endif

    radiance = skyTone(radiance, lightIntensity);
#ifdef _USE_FOG
    radiance = mix(FogColor, radiance, exp(-kSkyFogDistance * FogDensity));
#endif
#ifdef _USE_WEATHER_RAIN
    radiance *= (vec3(96.0, 123.0, 139.0) + vec3(159.0, 132.0, 116.0) * (1.0 - RainIntensity)) / 255.0;
#endif
#ifdef _USE_SKY_TERRAIN
    radiance = skyTerrain(radiance, view, skyCamera, lightIntensity);
#endif
    PS_OUT_Color = vec4(radiance, 1.0);
}
