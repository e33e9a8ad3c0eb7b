// Fragment stage of model surfaces: one directional light and an ambient
// term, simple (kind 1) or physically based (kind 3, _USE_PBR).

#define NUM_CASCADES 3
#define LPV_CASCADES_COUNT 4
#define LPV_CASCADES_BLEND_RATIO 0.1
#define LPV_MULTI_CASCADES 2

#if defined(_USE_TEXTURE) || defined(_USE_PBR)
#define KV_HAS_UV
#endif

in vec3 normal_W;
in vec3 pos_W;
#ifdef KV_HAS_UV
in vec2 uv;
#endif
#ifdef _USE_ANIMATION_CLIPTEST
in float vAnimationClipTest;
#endif

layout(location = 0) out vec4 outColor;

#ifdef _USE_TEXTURE
#ifndef _USE_NOT_BINDLESS_TEXTURE
layout(bindless_sampler) uniform sampler2D Albedo_Tx;
#else
uniform sampler2D Albedo_Tx;
#endif
#else
uniform vec4 AlbedoColor_V4;
#endif

#if defined(_USE_TEXTURE) && defined(_USE_ANTI_REPEAR_TEXTURE)
#ifndef _USE_NOT_BINDLESS_TEXTURE
layout(bindless_sampler) uniform sampler2D s_repNoise;
#else
uniform sampler2D s_repNoise;
#endif

// Hides the tiling of a repeating texture: a slowly varying noise picks two
// random offsets per area and blends the two samples where they agree.
vec4 textureNoTile(vec2 coord)
{
    float k = texture(s_repNoise, 0.005 * coord).x;
    float l = k * 8.0;
    float f = fract(l);
    float ia = floor(l);
    float ib = ia + 1.0;
    vec2 offa = sin(vec2(3.0, 7.0) * ia);
    vec2 offb = sin(vec2(3.0, 7.0) * ib);
    // Derivatives of the unshifted coordinate, so that the jumps in offset
    // do not pick the smallest mip level along their seams.
    vec2 dx = dFdx(coord);
    vec2 dy = dFdy(coord);
    vec4 cola = textureGrad(Albedo_Tx, coord + offa, dx, dy);
    vec4 colb = textureGrad(Albedo_Tx, coord + offb, dx, dy);
    vec4 diff = cola - colb;
    float sum = diff.r + diff.g + diff.b;
    return mix(cola, colb, smoothstep(0.2, 0.8, f - 0.1 * sum));
}
#endif

#ifdef _USE_PBR
uniform sampler2D NorMap_Tx;
uniform sampler2D Roughness_Tx;
uniform sampler2D AO_Tx;
uniform float Metallic_F;
uniform float Roughness_F;
uniform int TextureMask;
uniform samplerCube IrradianceMap;
uniform samplerCube PrefilterMap;

// There is no tangent attribute: the tangent frame comes from the screen
// derivatives of position and texture coordinate.
vec3 normalFromMap()
{
    vec3 tangentNormal = texture(NorMap_Tx, uv).xyz * 2.0 - 1.0;
    vec3 Q1 = dFdx(pos_W);
    vec3 Q2 = dFdy(pos_W);
    vec2 st1 = dFdx(uv);
    vec2 st2 = dFdy(uv);
    vec3 N = normalize(normal_W);
    vec3 T = normalize(Q1 * st2.t - Q2 * st1.t);
    vec3 B = -normalize(cross(N, T));
    return normalize(mat3(T, B, N) * tangentNormal);
}

float geometrySchlickGGX(float x, float k)
{
    return x / (x * (1.0 - k) + k);
}

// GGX distribution, Smith-Schlick geometry, Schlick Fresnel.
vec3 cookTorrance(vec3 N, vec3 V, vec3 L, vec3 H, vec3 albedo, float roughness,
                  float metallic, vec3 F0, float radiance)
{
    float a = roughness * roughness;
    float a2 = a * a;
    float NdotH = max(dot(N, H), 0.0);
    float d = NdotH * NdotH * (a2 - 1.0) + 1.0;
    float D = a2 / (MPI * d * d);

    float NdotV = max(dot(N, V), 0.0);
    float NdotL = max(dot(N, L), 0.0);
    float k = (roughness + 1.0) * (roughness + 1.0) / 8.0;
    float G = geometrySchlickGGX(NdotV, k) * geometrySchlickGGX(NdotL, k);

    vec3 F = F0 + (1.0 - F0) * pow(1.0 - max(dot(H, V), 0.0), 5.0);
    vec3 specular = D * G * F / (4.0 * NdotV * NdotL + 0.001);
    vec3 kd = (1.0 - F) * (1.0 - metallic);
    return (kd * albedo / MPI + specular) * radiance * NdotL;
}

// Analytic fit of the split-sum environment BRDF, instead of a lookup table.
vec3 envBRDFApprox(vec3 specularColor, float roughness, float NoV)
{
    const vec4 c0 = vec4(-1.0, -0.0275, -0.572, 0.022);
    const vec4 c1 = vec4(1.0, 0.0425, 1.04, -0.04);
    vec4 r = roughness * c0 + c1;
    float a004 = min(r.x * r.x, exp2(-9.28 * NoV)) * r.x + r.y;
    vec2 AB = vec2(-1.04, 1.04) * a004 + r.zw;
    // Below 2% reflectance nothing real reflects: no specular lift.
    AB.y *= clamp(50.0 * specularColor.g, 0.0, 1.0);
    return specularColor * AB.x + AB.y;
}
#endif

#ifdef _USE_SSAO
uniform sampler2D SSAO_Tx;
uniform vec2 ScreenSize;
#endif

#ifdef _USE_LPV
uniform sampler3D lpvAccumTexR;
uniform sampler3D lpvAccumTexG;
uniform sampler3D lpvAccumTexB;
uniform vec3 lpvPos[LPV_CASCADES_COUNT];
uniform vec3 lpvCellSize[LPV_CASCADES_COUNT];
uniform vec3 lpvTexSize;
uniform vec4 lpvParams;

// Ambient light from the propagation volumes. The four cascades lie side by
// side along x of one atlas; the fragment reads the cascade that holds it
// and the ones beyond, fading at the near edge of its cascade so that the
// switch from one cascade to the next does not show.
vec3 lpvAmbient(vec3 albedo, vec3 normal)
{
    float fragDist = distance(camPos_W, pos_W);
    vec3 lpvColor = vec3(0.0);

    float lpvStart = 0.0;
    float lpvEnd = 0.0;
    int index = 0;
    for (; index < LPV_CASCADES_COUNT; ++index)
    {
        lpvStart = lpvEnd;
        lpvEnd = lpvCellSize[index].x * lpvTexSize.y * 0.5;
        if (fragDist <= lpvEnd)
            break;
    }
    float lpvRange = lpvEnd - lpvStart;
    float lpvRatio = clamp((fragDist - lpvStart - lpvRange * LPV_CASCADES_BLEND_RATIO)
                           / (lpvRange * (1.0 - LPV_CASCADES_BLEND_RATIO)), 0.0, 1.0);

    // Projection of the clamped cosine lobe around the normal onto the
    // first two bands of spherical harmonics.
    vec4 shNormal = vec4(0.2821, -0.4886, 0.4886, -0.4886)
                  * vec4(1.0, -normal.y, -normal.z, -normal.x);

    for (int semiCascade = 0; semiCascade < 4; ++semiCascade, ++index)
    {
        if (index >= LPV_CASCADES_COUNT)
            index -= 1;
        if (semiCascade == 3 && fragDist < lpvRange * LPV_CASCADES_BLEND_RATIO + lpvStart)
            break;

        float cascadeHalfSize = lpvCellSize[index].x * lpvTexSize.y * 0.5;
        vec3 lpvP = (pos_W - lpvPos[index]) / cascadeHalfSize * 0.5 + 0.5;
        lpvP.x = (lpvP.x + float(index)) / float(LPV_CASCADES_COUNT);

        vec3 sampleColor = vec3(max(0.0, dot(shNormal, texture(lpvAccumTexR, lpvP))),
                                max(0.0, dot(shNormal, texture(lpvAccumTexG, lpvP))),
                                max(0.0, dot(shNormal, texture(lpvAccumTexB, lpvP))))
                         * lpvParams.y;

        float weight = 1.0;
        if (semiCascade == 0)
            weight = 1.0 - lpvRatio;
        else if (semiCascade == 3)
            weight = lpvRatio;
        lpvColor += sampleColor * weight;
    }

    lpvColor /= 3.0;
    lpvColor = (lpvColor + 0.2) / 1.2;
    return albedo / MPI * 3.5 * lpvColor;
}
#endif

#ifdef _USE_SHADOW
in vec4 pos_LightSpace[NUM_CASCADES];
uniform sampler2DArray Shadow_Tx;
uniform float CascadeEndClipSpace[NUM_CASCADES];
uniform float ShadowIntensity;

// Variance shadow map test of one cascade.
float chebyshevUpperBound(int cascade)
{
    vec3 p = pos_LightSpace[cascade].xyz / pos_LightSpace[cascade].w * 0.5 + 0.5;
    vec2 moments = texture(Shadow_Tx, vec3(p.xy, float(cascade))).rg;
    if (p.z <= moments.x)
        return 1.0;
    // The blurred map is unreliable at its border.
    if (p.x <= 0.01 || p.x >= 0.99 || p.y <= 0.01 || p.y >= 0.99)
        return 1.0;
    float variance = max(moments.y - moments.x * moments.x, 0.00002);
    float d = p.z - moments.x;
    // The high power suppresses light bleeding; ShadowIntensity lifts the
    // darkest value.
    float pMax = pow(variance / (variance + d * d), 6.5);
    return (pMax + ShadowIntensity) / (1.0 + ShadowIntensity);
}

float CalcShadowFactor(float depth)
{
    for (int i = 0; i < NUM_CASCADES; ++i)
    {
        if (depth < CascadeEndClipSpace[i])
            return chebyshevUpperBound(i);
    }
    return 1.0;
}
#endif

void main()
{
#ifdef _USE_ANIMATION_CLIPTEST
    if (vAnimationClipTest > 0.0)
        discard;
#endif

#ifdef _USE_TEXTURE
#ifdef _USE_ANTI_REPEAR_TEXTURE
    vec4 base = textureNoTile(uv);
#else
    vec4 base = texture(Albedo_Tx, uv);
#endif
#else
    vec4 base = AlbedoColor_V4;
#endif
    vec3 Albedo = decodeGamma(base.rgb);
    float alpha = base.a;

#ifdef _USE_WHITE_COLOR
    Albedo = vec3(1.0);
#endif

#ifdef _USE_ALPHA_TEST
    if (alpha < 0.01)
        discard;
#endif

    vec3 viewDir_W = normalize(camPos_W - pos_W);
    // Back faces are lit as front faces.
    vec3 normal = normalize(normal_W);
    if (!gl_FrontFacing)
        normal = -normal;

    vec3 dirLight_l = normalize(DirLightDir_V3);
    float lightIntensity = 0.4 * LightIntensity_F;

#ifdef _USE_WEATHER_SNOW
    applySnow(Albedo, normal, pos_W);
#endif

    vec3 Lo;
    vec3 ambient;
    float ao = 1.0;
#ifdef _USE_PBR
    vec3 dirLight_h = normalize(dirLight_l + viewDir_W);
    float Roughness = Roughness_F;
    // The normal map follows bit 8 (roughness map), not bit 2 (normal map):
    // a normal map without a roughness map is ignored.
    if ((TextureMask & 8) > 0)
    {
        normal = normalFromMap();
        Roughness = texture(Roughness_Tx, uv).r;
    }
    Roughness = clamp(Roughness, 0.04, 0.99);
    float Metallic = Metallic_F;
    if ((TextureMask & 16) > 0)
        ao = texture(AO_Tx, uv).r;

    vec3 F0 = mix(vec3(0.04), Albedo, Metallic);
    Lo = cookTorrance(normal, viewDir_W, dirLight_l, dirLight_h, Albedo, Roughness, Metallic,
                      F0, lightIntensity);

    vec3 SpecularColor = mix(vec3(0.08 * 0.5), Albedo, Metallic);
    float NoV = dot(normal, viewDir_W);
    vec3 FR = F0 + (max(vec3(1.0 - Roughness), F0) - F0) * pow(1.0 - max(NoV, 0.0), 5.0);
    vec3 kD = (1.0 - FR) * (1.0 - Metallic);

    // Sampled in one fixed direction: the ambient colour of a surface does
    // not depend on its orientation.
    vec3 irradiance = texture(IrradianceMap, normalize(vec3(0.5, 0.5, 1.0))).rgb;
    vec3 diffuse = irradiance * Albedo;
    vec3 R = reflect(-viewDir_W, normal);
    vec3 prefiltered = textureLod(PrefilterMap, R, Roughness * 4.0).rgb;
    vec3 specular = prefiltered * envBRDFApprox(SpecularColor, Roughness, NoV);
    ambient = kD * diffuse + specular;
#else
    Lo = lambertLight(Albedo, normal, dirLight_l, lightIntensity);
    ambient = simpleAmbient(Albedo);
#endif

    float ssao = 1.0;
#ifdef _USE_SSAO
    ssao = texture(SSAO_Tx, gl_FragCoord.xy / ScreenSize).r;
#endif

#ifdef _USE_LPV
    // The volume replaces whatever ambient was computed above.
    ambient = lpvAmbient(Albedo, normal);
#endif

    ambient *= ao * ssao;

    float shadow = 1.0;
#ifdef _USE_SHADOW
    shadow = CalcShadowFactor(gl_FragCoord.z);
#endif

    vec3 finalColor = finishColor(Lo * shadow * LightColor + ambient * AmbientColor, ambient);

#ifdef _USE_HIGHLIGHT_STYLE
    if (isHighlightGap())
        finalColor = vec3(0.0);
#endif

    outColor = vec4(finalColor, alpha);
    writeFrameOutputs(vec4((normalize(normal) + 1.0) * 0.5, 1.0));
}
