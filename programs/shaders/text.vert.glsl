// Text labels (kind 13): glyph quads placed by the label's model matrix.

#define NUM_CLIP 6

layout(location = 0) in vec3 osg_Vertex;
layout(location = 2) in vec2 osg_MultiTexCoord0;
layout(location = 7) in vec4 osg_Color;

out vec2 texCoord;
out vec4 vertexColor;

#ifdef _USE_CLIP_TEST
uniform int ClipPlaneCount_I;
uniform vec4 ClipPlaneArr[NUM_CLIP];
// Tested per fragment rather than by the hardware clip distances: a label
// is discarded by the same planes whatever state its glyph quads leave on.
out float clipDistance[NUM_CLIP];
#endif

void main()
{
    vec4 position = vec4(osg_Vertex, 1.0);
    vec4 worldPos = kv_ModelMatrix * position;
    gl_Position = kv_ViewProjectionMatrix * worldPos;
    texCoord = osg_MultiTexCoord0;
    vertexColor = osg_Color;

#ifdef _USE_CLIP_TEST
    for (int i = 0; i < NUM_CLIP; ++i)
        clipDistance[i] = i < ClipPlaneCount_I ? dot(worldPos, ClipPlaneArr[i]) : 0.0;
#endif

    kvWriteMotion(position);
}
