#version 420 core
// The full-screen triangle: corners (0,0), (2,0), (0,2) in texture space,
// so that the viewport is covered once. z = w puts it on the far plane.

void main()
{
    vec2 tex = vec2((gl_VertexID << 1) & 2, gl_VertexID & 2);
    gl_Position = vec4(tex * 2.0 - 1.0, 1.0, 1.0);
}
