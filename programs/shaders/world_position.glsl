// What the vertex stages that place model geometry in world space share
// (depth-only and surfaces): the node's matrix, times the instance's where
// instances are drawn; the shake; the user's clip planes and the
// animation's clip plane. After blocks, before the stage's own source.

#define NUM_CLIP 6

layout(location = 0) in vec3 osg_Vertex;
// A kind that always draws instances says so with KV_ALWAYS_INSTANCED; the
// others follow the node's define.
#if defined(KV_ALWAYS_INSTANCED) || defined(_USE_INSTANCE_MATRIX)
#define KV_INSTANCED
// Four locations, 3 to 6, one per row the geometry uploads.
layout(location = 3) in mat4 kv_InstanceMatrix;
#endif

#ifdef _USE_CLIP_TEST
uniform int ClipPlaneCount_I;
uniform vec4 ClipPlaneArr[NUM_CLIP];
out float gl_ClipDistance[NUM_CLIP];
#endif

#ifdef _USE_ANIMATION_CLIPTEST
uniform vec4 Animation_ClipTest;
#endif

#ifdef _USE_SHAKE
uniform float osg_SimulationTime;
#endif

mat4 kvModelMatrix()
{
#ifdef KV_INSTANCED
    return kv_ModelMatrix * kv_InstanceMatrix;
#else
    return kv_ModelMatrix;
#endif
}

vec4 kvWorldPosition(mat4 modelMat)
{
    vec4 worldPos = modelMat * vec4(osg_Vertex, 1.0);
#ifdef _USE_SHAKE
    worldPos.x += cos(osg_SimulationTime) * 2.0;
    worldPos.y += sin(osg_SimulationTime) * 0.5;
#endif
    return worldPos;
}

// A plane keeps its negative side.
void kvWriteClipDistances(vec4 worldPos)
{
#ifdef _USE_CLIP_TEST
    for (int i = 0; i < ClipPlaneCount_I && i < NUM_CLIP; ++i)
        gl_ClipDistance[i] = -dot(worldPos, ClipPlaneArr[i]);
#endif
}

// Where the fragment stage cuts the animation away: positive is cut.
// Without the animation's plane nothing is.
float kvAnimationClipTest(vec4 worldPos)
{
#ifdef _USE_ANIMATION_CLIPTEST
    return dot(worldPos, Animation_ClipTest);
#else
    return -1.0;
#endif
}
