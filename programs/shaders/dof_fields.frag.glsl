// The blurred near and far fields at half size, each the centre and 48 taps
// on three rings (radius 2, 4, 6 with 8, 16, 24 taps) scaled by the kernel.
// The far field is normalised by the circles of confusion of its taps, so
// sharp pixels among them add nothing.
in vec2 texCord;
layout(location = 0) out vec4 FS_OUT_Near;
layout(location = 1) out vec4 FS_OUT_Far;

layout(binding = 0) uniform sampler2D s_Color;
layout(binding = 1) uniform sampler2D s_MulCoCFar;
layout(binding = 2) uniform sampler2D s_CoC;
layout(binding = 3) uniform sampler2D s_NearCoCBlur;
uniform vec2 u_PixelSize;
uniform float u_KernelSize;

const int kRings = 3;
const float kTwoPi = 6.28318530718;
const float kMinWeight = 1.0e-4;

void main()
{
    float nearCoC = texture(s_NearCoCBlur, texCord).r;
    float farCoC = texture(s_CoC, texCord).g;

    vec3 nearSum = texture(s_Color, texCord).rgb;
    vec3 farSum = texture(s_MulCoCFar, texCord).rgb;
    float farWeight = farCoC;
    for (int ring = 1; ring <= kRings; ++ring)
    {
        float radius = float(2 * ring);
        int taps = 8 * ring;
        for (int i = 0; i < taps; ++i)
        {
            float angle = kTwoPi * float(i) / float(taps);
            vec2 uv = texCord + u_KernelSize * radius * vec2(cos(angle), sin(angle)) * u_PixelSize;
            nearSum += texture(s_Color, uv).rgb;
            farSum += texture(s_MulCoCFar, uv).rgb;
            farWeight += texture(s_CoC, uv).g;
        }
    }
    const float kSamples = 49.0;
    FS_OUT_Near = vec4(nearCoC > 0.0 ? nearSum / kSamples : texture(s_Color, texCord).rgb, 1.0);
    FS_OUT_Far = vec4(farCoC > 0.0 ? farSum / max(farWeight, kMinWeight) : vec3(0.0), 1.0);
}
