// Closes the holes that the sparse rings leave in the blurred fields: the
// largest value of each channel over the 3 by 3 neighbours, where the field
// is blurred at all.
in vec2 texCord;
layout(location = 0) out vec4 FS_OUT_Near;
layout(location = 1) out vec4 FS_OUT_Far;

layout(binding = 0) uniform sampler2D s_NearField;
layout(binding = 1) uniform sampler2D s_FarField;
layout(binding = 2) uniform sampler2D s_CoC;
layout(binding = 3) uniform sampler2D s_NearCoCBlur;
uniform vec2 u_PixelSize;

vec3 neighbourMax(sampler2D field)
{
    vec3 result = vec3(0.0);
    for (int y = -1; y <= 1; ++y)
        for (int x = -1; x <= 1; ++x)
            result = max(result, texture(field, texCord + vec2(x, y) * u_PixelSize).rgb);
    return result;
}

void main()
{
    vec3 nearField = texture(s_NearField, texCord).rgb;
    vec3 farField = texture(s_FarField, texCord).rgb;
    if (texture(s_NearCoCBlur, texCord).r > 0.0)
        nearField = neighbourMax(s_NearField);
    if (texture(s_CoC, texCord).g > 0.0)
        farField = neighbourMax(s_FarField);
    FS_OUT_Near = vec4(nearField, 1.0);
    FS_OUT_Far = vec4(farField, 1.0);
}
