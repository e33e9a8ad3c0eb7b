// Circle of confusion of each pixel: how far it lies in front of the sharp
// band (red) and behind it (green), each 0 inside the band and 1 at the
// planes.
in vec2 texCord;
out vec4 fragColor;

layout(binding = 0) uniform sampler2D s_Depth;
uniform float u_NearBegin;
uniform float u_NearEnd;
uniform float u_FarBegin;
uniform float u_FarEnd;
uniform float zNear;
uniform float zFar;

// A band of zero width would divide by zero.
const float kMinBand = 1.0e-6;

float eyeDepth(float windowDepth)
{
    float ndc = windowDepth * 2.0 - 1.0;
    return 2.0 * zNear * zFar / (zFar + zNear - ndc * (zFar - zNear));
}

void main()
{
    float depth = eyeDepth(texture(s_Depth, texCord).r);
    float nearCOC = 0.0;
    if (depth < u_NearBegin)
        nearCOC = 1.0;
    else if (depth < u_NearEnd)
        nearCOC = (u_NearEnd - depth) / max(u_NearEnd - u_NearBegin, kMinBand);
    float farCOC = 0.0;
    if (depth >= u_FarEnd)
        farCOC = 1.0;
    else if (depth > u_FarBegin)
        farCOC = (depth - u_FarBegin) / max(u_FarEnd - u_FarBegin, kMinBand);
    fragColor = vec4(clamp(nearCOC, 0.0, 1.0), clamp(farCOC, 0.0, 1.0), 0.0, 1.0);
}
