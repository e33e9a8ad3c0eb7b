// One triangle that covers the screen, made from gl_VertexID alone: the
// vertices (0,0), (2,0), (0,2) in texture space reach past the corners, and
// the rasteriser clips them, so no quad diagonal ever shows.
out vec2 texCord;

void main()
{
    texCord = vec2((gl_VertexID << 1) & 2, gl_VertexID & 2);
    gl_Position = vec4(texCord * 2.0 - 1.0, 0.0, 1.0);
}
