#version 420 core
// Full-screen triangle at depth 0 (the water mask draws over everything
// with depth test always); texCord runs 0..1 across the viewport.

out vec2 texCord;

void main()
{
    texCord = vec2((gl_VertexID << 1) & 2, gl_VertexID & 2);
    gl_Position = vec4(texCord * 2.0 - 1.0, 0.0, 1.0);
}
