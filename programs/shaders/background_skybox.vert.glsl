// Sky cube around the eye: only the rotation of the view applies, and the
// fixed projection keeps the cube clear of the scene's near and far planes.
// xyww puts every vertex at depth 1.

layout(location = 0) in vec3 osg_Vertex;

uniform mat4 fixedProjectionMatrix;
uniform bool reflect;

out vec3 uv;
out vec3 skyDirection;

void main()
{
    uv = osg_Vertex;
    if (reflect)
        uv.z = -uv.z;
    skyDirection = osg_Vertex;
    mat4 view = mat4(mat3(kv_ViewMatrix));
    vec4 position = fixedProjectionMatrix * view * vec4(osg_Vertex, 1.0);
    gl_Position = position.xyww;
}
