// The colour of sunlight arriving at the scene, one texel: the sun and sky
// light falling on a point at the ground, seen through the air between the
// camera's direction and that point. Surfaces multiply their direct light
// by it, so light reddens and dims as the sun goes down.

uniform vec3 camPos_W;

layout(location = 0) out vec4 PS_OUT_Color;

void main()
{
    // A viewer just above the ground looking back at the origin: the colour
    // must not depend on how high or far the real camera is.
    vec3 camera = normalize(camPos_W);
    camera.z = 0.1;
    vec3 p = vec3(0.0) - earth_center;

    vec3 skyIrradiance;
    vec3 sunIrradiance = GetSunAndSkyIrradiance(p, DirLightDir_V3, DirLightDir_V3, skyIrradiance);
    vec3 sphereRadiance = (sunIrradiance + skyIrradiance) / PI;

    vec3 transmittance;
    vec3 inScatter = GetSkyRadianceToPoint(camera - earth_center, p, 0.0, DirLightDir_V3, transmittance);
    vec3 radiance = sphereRadiance * transmittance + inScatter;

    PS_OUT_Color = vec4(skyTone(radiance, LightIntensity_F), 1.0);
}
