// One invocation per cascade: each draws the triangle into its own layer
// of the moments array, through that cascade's light matrix. So the three
// cascades take one pass over the casters. The terrain casters put
// "shadow_terrain" in front and also hand on the world position for the
// terrain mask.

#define CASCADE 3

layout(triangles, invocations = CASCADE) in;
layout(triangle_strip, max_vertices = 3) out;

uniform mat4 LightViewProjectionMatrix[CASCADE];

in vec2 uv[];
out vec2 uvGs;
out vec4 lightPositionGs;
#ifdef KV_TERRAIN_CASTER
out vec3 worldPositionGs;
#endif

void main()
{
    for (int i = 0; i < 3; ++i)
    {
        gl_Layer = gl_InvocationID;
        uvGs = uv[i];
        lightPositionGs = LightViewProjectionMatrix[gl_InvocationID] * gl_in[i].gl_Position;
#ifdef KV_TERRAIN_CASTER
        worldPositionGs = gl_in[i].gl_Position.xyz;
#endif
        gl_Position = lightPositionGs;
        EmitVertex();
    }
    EndPrimitive();
}
