// The sky cube's corners pass through untouched; the geometry stage places
// each triangle once per cube face.
layout(location = 0) in vec4 osg_Vertex;

void main()
{
    gl_Position = vec4(osg_Vertex.xyz, 1.0);
}
