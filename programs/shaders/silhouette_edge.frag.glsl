// Edges where the view normal or the linear depth jumps between the two
// neighbours of a pixel, across and along. A pixel on an edge darkens by the
// edge colour's alpha; elsewhere it stays 1.
in vec2 texCord;
out vec4 fragColor;

layout(binding = 0) uniform sampler2D normalMap;
layout(binding = 1) uniform sampler2D depthMap;
uniform vec2 nearFar;
uniform vec4 edgeColor;

// Components summed: a crease of about 10 degrees already counts.
const float kNormalTolerance = 0.3;
// Relative to the nearer depth, so that far walls are not all edges.
const float kDepthTolerance = 0.1;

float LinearizeDepth(float z)
{
    float near = nearFar.x;
    float far = nearFar.y;
    return 2.0 * near / (far + near - z * (far - near));
}

struct EdgeSample
{
    vec3 normal;
    float depth;
};

EdgeSample fetchSample(ivec2 pixel)
{
    ivec2 clamped = clamp(pixel, ivec2(0), textureSize(depthMap, 0) - 1);
    EdgeSample s;
    s.normal = texelFetch(normalMap, clamped, 0).rgb * 2.0 - 1.0;
    s.depth = LinearizeDepth(texelFetch(depthMap, clamped, 0).r);
    return s;
}

float checkSame(EdgeSample centre, EdgeSample other)
{
    vec3 normalDelta = abs(centre.normal - other.normal);
    bool sameNormal = normalDelta.x + normalDelta.y + normalDelta.z < kNormalTolerance;
    bool sameDepth = abs(centre.depth - other.depth) < kDepthTolerance * centre.depth;
    return (sameNormal && sameDepth) ? 1.0 : 1.0 - edgeColor.a;
}

void main()
{
    ivec2 pixel = ivec2(gl_FragCoord.xy);
    float vertical = checkSame(fetchSample(pixel + ivec2(0, 1)), fetchSample(pixel + ivec2(0, -1)));
    float horizontal = checkSame(fetchSample(pixel + ivec2(-1, 0)), fetchSample(pixel + ivec2(1, 0)));
    float edge = vertical * horizontal;
    fragColor = vec4(edge, edge, edge, 1.0);
}
