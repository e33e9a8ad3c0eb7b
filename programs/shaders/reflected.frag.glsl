// Fragment stage of surfaces in the water reflection: simple lighting only,
// no shadows or ambient occlusion, one colour output.

in vec2 uv;
in vec3 normal_W;
in vec3 pos_W;
#ifdef _USE_ANIMATION_CLIPTEST
in float vAnimationClipTest;
#endif

// Albedo_Tx (albedo_sampler) is sampled whatever the material: an
// untextured material reads black there and brings its colour through
// AlbedoColor_V4, a textured one has that colour at zero.
uniform vec4 AlbedoColor_V4;

#ifdef _USE_WEATHER_RAIN
uniform float RainIntensity;
#endif

layout(location = 0) out vec4 outColor;

void main()
{
#ifdef _USE_ANIMATION_CLIPTEST
    if (vAnimationClipTest > 0.0)
        discard;
#endif

    vec4 base = texture(Albedo_Tx, uv) + AlbedoColor_V4;
    vec3 Albedo = decodeGamma(base.rgb);
    float alpha = base.a;

    vec3 normal = normalize(normal_W);
    vec3 dirLight_l = normalize(DirLightDir_V3);
    float lightIntensity = 0.4 * LightIntensity_F;

#ifdef _USE_WEATHER_RAIN
    // Rain darkens the sunlit side of what the water mirrors.
    lightIntensity *= 0.6 + 0.4 * (1.0 - RainIntensity);
#endif
#ifdef _USE_WEATHER_SNOW
    applySnow(Albedo, normal, pos_W);
#endif

    vec3 Lo = lambertLight(Albedo, normal, dirLight_l, lightIntensity);
    vec3 ambient = simpleAmbient(Albedo);
    outColor = vec4(finishColor(Lo * LightColor + ambient * AmbientColor, ambient), alpha);
}
