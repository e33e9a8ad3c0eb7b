// Depth-only vertex stage (kinds 20 to 24): the position and the clipping
// that the colour pass applies, so that both passes agree on coverage.

#define NUM_CLIP 6

layout(location = 0) in vec3 osg_Vertex;
#ifdef KV_ALWAYS_INSTANCED
layout(location = 3) in mat4 kv_InstanceMatrix;
#endif

#ifdef _USE_CLIP_TEST
uniform int ClipPlaneCount_I;
uniform vec4 ClipPlaneArr[NUM_CLIP];
out float gl_ClipDistance[NUM_CLIP];
#endif

// Always written: the clip-test fragment stage of kinds 23 and 24 reads it
// whatever the node's defines are.
out float vAnimationClipTest;
#ifdef _USE_ANIMATION_CLIPTEST
uniform vec4 Animation_ClipTest;
#endif

#ifdef _USE_SHAKE
uniform float osg_SimulationTime;
#endif

void main()
{
    mat4 modelMat = kv_ModelMatrix;
#ifdef KV_ALWAYS_INSTANCED
    modelMat = modelMat * kv_InstanceMatrix;
#endif
    vec4 worldPos = modelMat * vec4(osg_Vertex, 1.0);
#ifdef _USE_SHAKE
    worldPos.x += cos(osg_SimulationTime) * 2.0;
    worldPos.y += sin(osg_SimulationTime) * 0.5;
#endif

#ifdef _USE_CLIP_TEST
    for (int i = 0; i < ClipPlaneCount_I && i < NUM_CLIP; ++i)
        gl_ClipDistance[i] = -dot(worldPos, ClipPlaneArr[i]);
#endif

#ifdef _USE_ANIMATION_CLIPTEST
    vAnimationClipTest = dot(worldPos, Animation_ClipTest);
#else
    // Nothing is cut away.
    vAnimationClipTest = -1.0;
#endif

    gl_Position = kv_ViewProjectionMatrix * worldPos;
}
