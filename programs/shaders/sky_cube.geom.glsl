// One draw fills all six faces of a layered cube-map target: each triangle
// is sent to every layer through that face's camera. The corner itself is
// the direction from the cube's centre, which the fragment stages need.
layout(triangles) in;
layout(triangle_strip, max_vertices = 18) out;

uniform mat4 ViewProjectionMatrix[6];

out vec3 gs_WorldPos;

void main()
{
    for (int face = 0; face < 6; ++face) {
        for (int i = 0; i < 3; ++i) {
            gl_Layer = face;
            gs_WorldPos = gl_in[i].gl_Position.xyz;
            gl_Position = ViewProjectionMatrix[face] * gl_in[i].gl_Position;
            EmitVertex();
        }
        EndPrimitive();
    }
}
