// Table generator: the full-viewport quad, flat.

layout(location = 0) in vec4 osg_Vertex;

void main()
{
    gl_Position = vec4(osg_Vertex.xy, 0.0, 1.0);
}
