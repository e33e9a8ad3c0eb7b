// Geometry pass of ambient occlusion: position and normal maps. A face seen
// from behind turns its normal to the viewer, so that thin, double-sided
// geometry occludes from both sides.

in vec3 vViewPosition;
in vec3 vViewNormal;

layout(location = 0) out vec4 posOut;
layout(location = 1) out vec4 normalOut;

void main()
{
    posOut = vec4(vViewPosition, 1.0);
    vec3 normal = normalize(vViewNormal);
    normalOut = vec4(gl_FrontFacing ? normal : -normal, 1.0);
}
