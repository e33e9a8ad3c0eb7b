// Ambient occlusion of each pixel: the kernel, turned about the pixel's
// normal by the tiled noise, is laid out in the hemisphere over the
// surface; every sample that lies behind what the position map shows at
// its place on the screen counts as occluded. Pixels the geometry pass did
// not write hold (1, 1, 1): their depth of 1 is in front of everything
// visible, so samples that land there count as occluded too.

#define MAX_KERNEL_SIZE 32

in vec2 texCord;
layout(location = 0) out vec4 FragColor;

uniform sampler2D gPositionMap;
uniform sampler2D gNormalMap;
uniform sampler2D gNoiseMap;
uniform vec3 gKernel[MAX_KERNEL_SIZE];
uniform vec2 noiseScale;

// In scene units, whatever the distance to the camera.
const float gSampleRad = 250.0;
// Keeps a flat surface from occluding itself through the map's precision.
const float bias = 0.025;

void main()
{
    vec3 Pos = texture(gPositionMap, texCord).xyz;
    vec3 normal = texture(gNormalMap, texCord).xyz;

    vec3 randomVec = normalize(texture(gNoiseMap, texCord * noiseScale).xyz);
    vec3 tangent = normalize(randomVec - normal * dot(randomVec, normal));
    vec3 bitangent = cross(normal, tangent);
    mat3 TBN = mat3(tangent, bitangent, normal);

    float occlusion = 0.0;
    for (int i = 0; i < MAX_KERNEL_SIZE; ++i)
    {
        vec3 samplePos = Pos + (TBN * gKernel[i]) * gSampleRad;
        vec4 offset = kv_ProjectionMatrix * vec4(samplePos, 1.0);
        offset.xy /= offset.w;
        offset.xy = offset.xy * 0.5 + 0.5;
        float sampleDepth = texture(gPositionMap, offset.xy).b;
        // Geometry far in front of the pixel (another building) hardly
        // darkens it.
        float rangeCheck = smoothstep(0.0, 1.0, gSampleRad / abs(Pos.z - sampleDepth));
        occlusion += (sampleDepth >= samplePos.z + bias ? 1.0 : 0.0) * rangeCheck;
    }
    float AO = 1.0 - occlusion / float(MAX_KERNEL_SIZE);
    AO *= AO;
    FragColor = vec4(AO, AO, AO, 1.0);
}
