// Vertex stage of model surfaces (kinds 1 and 3): world-space position and
// normal for lighting, and what each switched-on effect needs downstream.
// The shared placement and clipping come from world_position, the motion
// output from frame_motion.

#define NUM_CASCADES 3

// The maps of physically based materials are read at the texture coordinate
// even when there is no albedo texture.
#if defined(_USE_TEXTURE) || defined(_USE_PBR)
#define KV_HAS_UV
#endif

layout(location = 1) in vec3 osg_Normal;
#ifdef KV_HAS_UV
layout(location = 2) in vec2 osg_MultiTexCoord0;
out vec2 uv;
#endif

out vec3 normal_W;
out vec3 pos_W;

#ifdef _USE_FOG
out vec3 pos_V;
#endif

#ifdef _USE_SHADOW
uniform mat4 LightViewProjectionMatrix[NUM_CASCADES];
out vec4 pos_LightSpace[NUM_CASCADES];
#endif

#ifdef _USE_ANIMATION_CLIPTEST
out float vAnimationClipTest;
#endif

void main()
{
    mat4 modelMat = kvModelMatrix();

#ifdef KV_HAS_UV
    uv = osg_MultiTexCoord0;
#endif

    normal_W = transpose(inverse(mat3(modelMat))) * osg_Normal;
    vec4 worldPos = kvWorldPosition(modelMat);

#ifdef KV_INSTANCED
    // A mirroring instance turns its faces inside out; the inverse transpose
    // alone leaves the normal pointing inwards. The sign of the triple
    // product of the uploaded rows is the sign of the determinant.
    vec3 xa = kv_InstanceMatrix[0].xyz;
    vec3 ya = kv_InstanceMatrix[1].xyz;
    vec3 za = kv_InstanceMatrix[2].xyz;
    normal_W *= dot(normalize(cross(xa, ya)), normalize(za));
#endif

    pos_W = worldPos.xyz;

#ifdef _USE_FOG
    pos_V = (kv_ViewMatrix * worldPos).xyz;
#endif

#ifdef _USE_SHADOW
    for (int i = 0; i < NUM_CASCADES; ++i)
        pos_LightSpace[i] = LightViewProjectionMatrix[i] * worldPos;
#endif

    kvWriteClipDistances(worldPos);
#ifdef _USE_ANIMATION_CLIPTEST
    vAnimationClipTest = kvAnimationClipTest(worldPos);
#endif

    gl_Position = kv_ViewProjectionMatrix * worldPos;

#ifdef KV_INSTANCED
    kvWriteMotion(kv_InstanceMatrix * vec4(osg_Vertex, 1.0));
#else
    kvWriteMotion(vec4(osg_Vertex, 1.0));
#endif
}
