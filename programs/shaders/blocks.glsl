// The uniform blocks every program shares, filled by the render context and
// the GL state. std140 fixes the byte layout those writers rely on.

layout(std140, binding = 0) uniform CameraInfo
{
    mat4 kv_ViewMatrix;
    mat4 kv_ViewMatrixInverse;
    mat4 kv_ViewProjectionMatrix;
    mat4 kv_ProjectionMatrix;
    mat4 kv_lastViewMatrix;
    mat4 kv_lastProjectionMatrix;
    mat4 kv_lastViewProjectionMatrix;
};

layout(std140, binding = 1) uniform EntityInfo
{
    mat4 kv_ModelMatrix;
    mat4 kv_lastModelMatrix;
};

// Floats 0 and 1, then one vec3 per 16 bytes: 4-6, 8-10, 12-14.
layout(std140, binding = 2) uniform LightInfo
{
    float LightIntensity_F;
    float AmbientIntensity_F;
    vec3 DirLightDir_V3;
    vec3 LightColor;
    vec3 AmbientColor;
};
