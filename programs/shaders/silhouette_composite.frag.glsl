// The edge map, smoothed along its lines by a small FXAA, laid over the
// scene colour (or over a plain background when only edges are wanted).
in vec2 texCord;
out vec4 fragColor;

layout(binding = 0) uniform sampler2D colorMap;
layout(binding = 1) uniform sampler2D edgeMap;
uniform bool edgeOnly;
uniform vec4 edgeColor;
uniform vec3 backgroundColor;

#define FXAA_REDUCE_MIN (1.0 / 128.0)
#define FXAA_REDUCE_MUL (1.0 / 8.0)
#define FXAA_SPAN_MAX 8.0

const vec3 kLumaWeights = vec3(0.299, 0.587, 0.114);

vec3 fxaa(sampler2D map, vec2 uv, vec2 inverseSize)
{
    vec3 rgbNW = texture(map, uv + vec2(-1.0, -1.0) * inverseSize).rgb;
    vec3 rgbNE = texture(map, uv + vec2(1.0, -1.0) * inverseSize).rgb;
    vec3 rgbSW = texture(map, uv + vec2(-1.0, 1.0) * inverseSize).rgb;
    vec3 rgbSE = texture(map, uv + vec2(1.0, 1.0) * inverseSize).rgb;
    vec3 rgbM = texture(map, uv).rgb;
    float lumaNW = dot(rgbNW, kLumaWeights);
    float lumaNE = dot(rgbNE, kLumaWeights);
    float lumaSW = dot(rgbSW, kLumaWeights);
    float lumaSE = dot(rgbSE, kLumaWeights);
    float lumaM = dot(rgbM, kLumaWeights);
    float lumaMin = min(lumaM, min(min(lumaNW, lumaNE), min(lumaSW, lumaSE)));
    float lumaMax = max(lumaM, max(max(lumaNW, lumaNE), max(lumaSW, lumaSE)));

    vec2 dir;
    dir.x = -((lumaNW + lumaNE) - (lumaSW + lumaSE));
    dir.y = (lumaNW + lumaSW) - (lumaNE + lumaSE);
    float dirReduce = max((lumaNW + lumaNE + lumaSW + lumaSE) * (0.25 * FXAA_REDUCE_MUL), FXAA_REDUCE_MIN);
    float rcpDirMin = 1.0 / (min(abs(dir.x), abs(dir.y)) + dirReduce);
    dir = clamp(dir * rcpDirMin, vec2(-FXAA_SPAN_MAX), vec2(FXAA_SPAN_MAX)) * inverseSize;

    vec3 rgbA = 0.5 * (texture(map, uv + dir * (1.0 / 3.0 - 0.5)).rgb +
                       texture(map, uv + dir * (2.0 / 3.0 - 0.5)).rgb);
    vec3 rgbB = rgbA * 0.5 + 0.25 * (texture(map, uv + dir * -0.5).rgb + texture(map, uv + dir * 0.5).rgb);
    float lumaB = dot(rgbB, kLumaWeights);
    return (lumaB < lumaMin || lumaB > lumaMax) ? rgbA : rgbB;
}

void main()
{
    vec3 result = fxaa(edgeMap, texCord, 1.0 / vec2(textureSize(edgeMap, 0)));
    // Edge-only pictures never read the scene colour.
    vec3 originColor = edgeOnly ? backgroundColor : texture(colorMap, texCord).rgb;
    fragColor = vec4(mix(edgeColor.rgb, originColor, result), 1.0);
}
