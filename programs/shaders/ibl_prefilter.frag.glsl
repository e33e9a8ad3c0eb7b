// Specular light from the sky cube for one roughness: GGX importance
// sampling around the reflected direction, each sample read from the mip
// level whose texel covers the sample's solid angle, so that few samples
// still give a smooth result.

in vec3 gs_WorldPos;

layout(binding = 0) uniform samplerCube environmentMap;
uniform float roughness;

layout(location = 0) out vec4 FragColor;

const float PI = 3.14159265359;
const uint SAMPLE_COUNT = 16u;
// Solid angle of one texel of the 1024-texel sky cube.
const float kTexelSolidAngle = 4.0 * PI / (6.0 * 1024.0 * 1024.0);

float DistributionGGX(float NdotH, float roughness)
{
    float a = roughness * roughness;
    float a2 = a * a;
    float d = NdotH * NdotH * (a2 - 1.0) + 1.0;
    return a2 / (PI * d * d);
}

float RadicalInverse_VdC(uint bits)
{
    bits = (bits << 16u) | (bits >> 16u);
    bits = ((bits & 0x55555555u) << 1u) | ((bits & 0xAAAAAAAAu) >> 1u);
    bits = ((bits & 0x33333333u) << 2u) | ((bits & 0xCCCCCCCCu) >> 2u);
    bits = ((bits & 0x0F0F0F0Fu) << 4u) | ((bits & 0xF0F0F0F0u) >> 4u);
    bits = ((bits & 0x00FF00FFu) << 8u) | ((bits & 0xFF00FF00u) >> 8u);
    return float(bits) * 2.3283064365386963e-10;
}

vec2 Hammersley(uint i, uint n)
{
    return vec2(float(i) / float(n), RadicalInverse_VdC(i));
}

vec3 ImportanceSampleGGX(vec2 Xi, vec3 N, float roughness)
{
    float a = roughness * roughness;
    float phi = 2.0 * PI * Xi.x;
    float cosTheta = sqrt((1.0 - Xi.y) / (1.0 + (a * a - 1.0) * Xi.y));
    float sinTheta = sqrt(1.0 - cosTheta * cosTheta);
    vec3 H = vec3(cos(phi) * sinTheta, sin(phi) * sinTheta, cosTheta);

    // World z is up; straight up or down needs another reference axis.
    vec3 up = abs(N.z) < 0.999 ? vec3(0.0, 0.0, 1.0) : vec3(1.0, 0.0, 0.0);
    vec3 tangent = normalize(cross(up, N));
    vec3 bitangent = cross(N, tangent);
    return normalize(tangent * H.x + bitangent * H.y + N * H.z);
}

void main()
{
    vec3 N = normalize(gs_WorldPos);
    vec3 R = N;
    vec3 V = R;

    vec3 prefiltered = vec3(0.0);
    float totalWeight = 0.0;
    for (uint i = 0u; i < SAMPLE_COUNT; ++i) {
        vec3 H = ImportanceSampleGGX(Hammersley(i, SAMPLE_COUNT), N, roughness);
        vec3 L = normalize(2.0 * dot(V, H) * H - V);
        float NdotL = max(dot(N, L), 0.0);
        if (NdotL > 0.0) {
            float NdotH = max(dot(N, H), 0.0);
            float HdotV = max(dot(H, V), 0.0);
            float pdf = DistributionGGX(NdotH, roughness) * NdotH / (4.0 * HdotV) + 0.0001;
            float sampleSolidAngle = 1.0 / (float(SAMPLE_COUNT) * pdf + 0.0001);
            float mip = roughness == 0.0 ? 0.0 : 0.5 * log2(sampleSolidAngle / kTexelSolidAngle);
            prefiltered += textureLod(environmentMap, L, mip).rgb * NdotL;
            totalWeight += NdotL;
        }
    }
    // The sky cube holds display colour; lighting needs linear light.
    FragColor = vec4(pow(prefiltered / totalWeight, vec3(2.2)), 1.0);
}
