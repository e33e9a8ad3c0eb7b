// Unlit flat colour (kind 2): position only.

layout(location = 0) in vec3 osg_Vertex;
#ifdef _USE_INSTANCE_MATRIX
layout(location = 3) in mat4 kv_InstanceMatrix;
#endif

void main()
{
    vec4 position = vec4(osg_Vertex, 1.0);
#ifdef _USE_INSTANCE_MATRIX
    position = kv_InstanceMatrix * position;
#endif
    gl_Position = kv_ViewProjectionMatrix * kv_ModelMatrix * position;
    kvWriteMotion(position);
}
