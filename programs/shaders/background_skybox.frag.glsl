// Sky colour from the sky cube, with a slowly turning cloud layer whose
// density is the red channel of the cloud cube. Clouds show only while the
// sun is up or near the horizon.

// The sky is at infinity and never moves on screen: its velocity output is
// always written.
#ifndef _USE_TAA
#define _USE_TAA
#endif

in vec3 uv;
in vec3 skyDirection;

uniform samplerCube skybox;
uniform samplerCube cloudbox;
uniform float osg_FrameTime;
#ifdef _USE_ATMOSPHERE
uniform sampler2D scatteringTexture;
#endif
#ifdef _USE_WEATHER_RAIN
uniform float RainIntensity;
#endif

layout(location = 0) out vec4 outColor;
#ifdef _USE_TAA
layout(location = 1) out vec4 velocityOut;
#endif
#ifdef _USE_SILHOUETTE
layout(location = 2) out vec4 normalOut;
#endif
#ifdef _USE_VOLUMETRICLIGHT
layout(location = 3) out vec4 volumetricLightOut;
#endif

void main()
{
    vec3 sky = textureLod(skybox, uv, 0.0).rgb;

    float angle = radians(osg_FrameTime * 0.8);
    vec3 cloudUV = uv;
    cloudUV.x = sin(angle) * uv.y + cos(angle) * uv.x;
    cloudUV.y = cos(angle) * uv.y - sin(angle) * uv.x;
    float cloudAlpha = texture(cloudbox, cloudUV).r;
    vec3 cloudColor = vec3(1.0);

    bool daylight = DirLightDir_V3.z > -0.1;
#ifdef _USE_ATMOSPHERE
    if (daylight)
        cloudColor *= texelFetch(scatteringTexture, ivec2(0, 0), 0).rgb;
#endif
#ifdef _USE_WEATHER_RAIN
    cloudColor *= 0.6 + 0.4 * (1.0 - RainIntensity);
#endif

    if (daylight)
        outColor = vec4(mix(sky, cloudColor, cloudAlpha), 1.0);
    else
        outColor = vec4(sky, 1.0);
#ifdef _USE_WHITE_COLOR
    outColor = vec4(1.0);
#endif

#ifdef _USE_TAA
    velocityOut = vec4(1.0);
#endif
#ifdef _USE_SILHOUETTE
    normalOut = vec4(0.0, 0.0, 0.0, 1.0);
#endif
#ifdef _USE_VOLUMETRICLIGHT
    // The sun's disc: about 1.26 degrees of half-angle.
    if (dot(normalize(skyDirection), DirLightDir_V3) > cos(0.022))
        volumetricLightOut = vec4(sky, 1.0);
    else
        volumetricLightOut = vec4(0.0, 0.0, 0.0, 1.0);
#endif
}
