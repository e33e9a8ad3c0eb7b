// The screen triangle once for each cascade layer of the shadow maps.

#define CASCADE 3

layout(triangles, invocations = CASCADE) in;
layout(triangle_strip, max_vertices = 3) out;

in vec2 texCord[];
out vec2 texCordGs;

void main()
{
    for (int i = 0; i < 3; ++i)
    {
        gl_Layer = gl_InvocationID;
        texCordGs = texCord[i];
        gl_Position = gl_in[i].gl_Position;
        EmitVertex();
    }
    EndPrimitive();
}
