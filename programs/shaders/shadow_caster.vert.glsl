// Vertex stage of the shadow casters (kinds 14 to 16): the vertex in world
// space only. The geometry stage puts each triangle through the light matrix
// of every cascade. The shared placement comes from world_position; kind 15
// puts "instanced" in front, so that the instance matrix is always read.

layout(location = 2) in vec2 osg_MultiTexCoord0;
out vec2 uv;

void main()
{
    uv = osg_MultiTexCoord0;
    gl_Position = kvWorldPosition(kvModelMatrix());
}
