// One step of the Kawase filter on one layer: four bilinear taps at the
// diagonal corners of a square that grows with the iteration, so that a few
// cheap steps give a wide, smooth blur of the moments.

in vec2 texCordGs;
layout(location = 0) out vec4 outColor;

layout(binding = 0) uniform sampler2DArray uTex0;
layout(location = 0) uniform vec3 u_xyPixelSize_zIteration;

void main()
{
    vec2 pixelSize = u_xyPixelSize_zIteration.xy;
    vec2 dUV = pixelSize * u_xyPixelSize_zIteration.z + pixelSize * 0.5;
    float layer = float(gl_Layer);
    vec3 color = texture(uTex0, vec3(texCordGs.x - dUV.x, texCordGs.y + dUV.y, layer)).rgb;
    color += texture(uTex0, vec3(texCordGs.x + dUV.x, texCordGs.y + dUV.y, layer)).rgb;
    color += texture(uTex0, vec3(texCordGs.x + dUV.x, texCordGs.y - dUV.y, layer)).rgb;
    color += texture(uTex0, vec3(texCordGs.x - dUV.x, texCordGs.y - dUV.y, layer)).rgb;
    outColor = vec4(color * 0.25, 1.0);
}
