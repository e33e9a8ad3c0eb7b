// Full size: the sharp colour, then the far field over it by the far circle
// of confusion, then the near field by the blurred near one. The far field's
// four half-size texels are weighted by how close their circle of confusion
// is to this pixel's, so a sharp object does not bleed into the blur behind
// it at half-size resolution.
in vec2 texCord;
out vec4 fragColor;

layout(binding = 0) uniform sampler2D s_Color;
layout(binding = 1) uniform sampler2D s_CoC;
layout(binding = 2) uniform sampler2D s_CoCHalf;
layout(binding = 3) uniform sampler2D s_NearField;
layout(binding = 4) uniform sampler2D s_FarField;
layout(binding = 5) uniform sampler2D s_NearCoCBlur;
uniform float u_Blend;

const float kEpsilon = 0.001;

void main()
{
    vec3 colour = texture(s_Color, texCord).rgb;
    vec2 coc = texture(s_CoC, texCord).rg;

    ivec2 halfSize = textureSize(s_FarField, 0);
    vec2 position = texCord * vec2(halfSize) - 0.5;
    ivec2 base = ivec2(floor(position));
    vec2 f = position - vec2(base);
    // Gathered texels: x (0, 1), y (1, 1), z (1, 0), w (0, 0).
    vec4 halfCoC = textureGather(s_CoCHalf, texCord, 1);
    float a = (1.0 - f.x) * (1.0 - f.y) / (abs(coc.g - halfCoC.w) + kEpsilon);
    float b = f.x * (1.0 - f.y) / (abs(coc.g - halfCoC.z) + kEpsilon);
    float c = (1.0 - f.x) * f.y / (abs(coc.g - halfCoC.x) + kEpsilon);
    float d = f.x * f.y / (abs(coc.g - halfCoC.y) + kEpsilon);
    ivec2 top = halfSize - 1;
    vec3 dofFar = a * texelFetch(s_FarField, clamp(base, ivec2(0), top), 0).rgb
                + b * texelFetch(s_FarField, clamp(base + ivec2(1, 0), ivec2(0), top), 0).rgb
                + c * texelFetch(s_FarField, clamp(base + ivec2(0, 1), ivec2(0), top), 0).rgb
                + d * texelFetch(s_FarField, clamp(base + ivec2(1, 1), ivec2(0), top), 0).rgb;
    dofFar /= a + b + c + d;

    vec3 result = mix(colour, dofFar, u_Blend * coc.g);
    float nearCoC = texture(s_NearCoCBlur, texCord).r;
    result = mix(result, texture(s_NearField, texCord).rgb, u_Blend * nearCoC);
    fragColor = vec4(result, 1.0);
}
