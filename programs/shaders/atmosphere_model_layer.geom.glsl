// Table generator: sends the quad's triangles to one layer of a 3D table.

layout(triangles) in;
layout(triangle_strip, max_vertices = 3) out;

uniform int layer;

void main()
{
    for (int i = 0; i < 3; ++i)
    {
        gl_Position = gl_in[i].gl_Position;
        gl_Layer = layer;
        EmitVertex();
    }
    EndPrimitive();
}
