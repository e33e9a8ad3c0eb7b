// Half size: the colour, the colour weighted by the far circle of
// confusion, and the circle of confusion of the first of the four pixels.
// Pixels across a depth step from the first get little weight, so the far
// blur does not pull sharp foreground colour into the background.
in vec2 texCord;
layout(location = 0) out vec4 FS_OUT_Color;
layout(location = 1) out vec4 FS_OUT_MulCoCFar;
layout(location = 2) out vec4 FS_OUT_CoC;

layout(binding = 0) uniform sampler2D s_Color;
layout(binding = 1) uniform sampler2D s_CoC;
uniform vec2 u_PixelSize;

const float kFirstWeight = 1000.0;
const float kEpsilon = 0.001;

void main()
{
    vec2 offsets[4] = vec2[4](vec2(-0.25, -0.25), vec2(0.25, -0.25), vec2(-0.25, 0.25), vec2(0.25, 0.25));
    vec2 coc00 = texture(s_CoC, texCord + offsets[0] * u_PixelSize).rg;
    vec3 sum = texture(s_Color, texCord + offsets[0] * u_PixelSize).rgb * kFirstWeight;
    float weights = kFirstWeight;
    for (int i = 1; i < 4; ++i)
    {
        vec2 uv = texCord + offsets[i] * u_PixelSize;
        float weight = 1.0 / (abs(coc00.g - texture(s_CoC, uv).g) + kEpsilon);
        sum += texture(s_Color, uv).rgb * weight;
        weights += weight;
    }
    FS_OUT_Color = vec4(texture(s_Color, texCord).rgb, 1.0);
    FS_OUT_MulCoCFar = vec4(sum / weights * coc00.g, 1.0);
    FS_OUT_CoC = vec4(coc00, 0.0, 1.0);
}
