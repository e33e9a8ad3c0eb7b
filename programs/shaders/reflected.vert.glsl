// Vertex stage of surfaces drawn into the water reflection (kinds 6 and 7):
// lit in world space, placed through the mirror, and cut at the water plane.

#define NUM_CLIP 6

layout(location = 0) in vec3 osg_Vertex;
layout(location = 1) in vec3 osg_Normal;
layout(location = 2) in vec2 osg_MultiTexCoord0;
#if defined(KV_ALWAYS_INSTANCED) || defined(_USE_INSTANCE_MATRIX)
#define KV_INSTANCED
layout(location = 3) in mat4 kv_InstanceMatrix;
#endif

uniform mat4 reflectMatrix;
uniform vec4 waterPlane;

out vec2 uv;
out vec3 normal_W;
out vec3 pos_W;

#ifdef _USE_FOG
out vec3 pos_V;
#endif

#ifdef _USE_CLIP_TEST
uniform int ClipPlaneCount_I;
uniform vec4 ClipPlaneArr[NUM_CLIP];
#endif
// Entry NUM_CLIP is the water plane.
out float gl_ClipDistance[NUM_CLIP + 1];

#ifdef _USE_ANIMATION_CLIPTEST
uniform vec4 Animation_ClipTest;
out float vAnimationClipTest;
#endif

void main()
{
    mat4 modelMat = kv_ModelMatrix;
#ifdef KV_INSTANCED
    // A mirrored instance is not corrected here: the reflection is a
    // low-detail picture.
    modelMat = modelMat * kv_InstanceMatrix;
#endif

    uv = osg_MultiTexCoord0;
    normal_W = transpose(inverse(mat3(modelMat))) * osg_Normal;
    vec4 worldPos = modelMat * vec4(osg_Vertex, 1.0);
    pos_W = worldPos.xyz;

#ifdef _USE_FOG
    pos_V = (kv_ViewMatrix * worldPos).xyz;
#endif

#ifdef _USE_CLIP_TEST
    for (int i = 0; i < ClipPlaneCount_I && i < NUM_CLIP; ++i)
        gl_ClipDistance[i] = -dot(worldPos, ClipPlaneArr[i]);
#endif
    // What lies under the water is not reflected.
    gl_ClipDistance[NUM_CLIP] = -dot(worldPos, waterPlane);

#ifdef _USE_ANIMATION_CLIPTEST
    vAnimationClipTest = dot(worldPos, Animation_ClipTest);
#endif

    gl_Position = kv_ViewProjectionMatrix * reflectMatrix * worldPos;
}
