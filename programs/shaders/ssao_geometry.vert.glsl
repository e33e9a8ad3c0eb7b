// Geometry pass of ambient occlusion: each surface's position and normal in
// view space. Placement (node, instance) comes from world_position.

layout(location = 1) in vec3 osg_Normal;

out vec3 vViewPosition;
out vec3 vViewNormal;

void main()
{
    vec4 worldPos = kvWorldPosition(kvModelMatrix());
    vec4 viewPos = kv_ViewMatrix * worldPos;
    // Normals go through the inverse transpose, so that scaled nodes keep
    // them perpendicular to their faces.
    mat3 modelView = mat3(kv_ViewMatrix * kvModelMatrix());
    vViewNormal = transpose(inverse(modelView)) * osg_Normal;
    vViewPosition = viewPos.xyz;
    gl_Position = kv_ProjectionMatrix * viewPos;
}
