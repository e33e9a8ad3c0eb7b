// Culls the instances of one instanced geometry: one invocation per
// instance reads its matrix from the unchanging input rows and, if the
// instance may be visible, appends it to the output rows that the draws
// read, counting the survivors straight into the indirect command.
//
// Three tests, each erring towards keeping an instance:
// - frustum: all eight corners of its box beyond one side plane or the near
//   plane (the far plane is not tested);
// - small feature: its screen rectangle at most kSmallFeaturePixels on both
//   axes;
// - depth chain (when "HiZTest" is set): its nearest depth behind the
//   farthest depth of the chain over its rectangle.
// A box that reaches behind the eye has no meaningful rectangle and is kept.

layout(local_size_x = 512) in;

layout(binding = 0) uniform atomic_uint instanceCount;

struct InstanceData
{
    vec4 InstanceMatrixRow;
};

// Row k of instance i lies at i + k * InstacneNum in both buffers.
layout(std430, binding = 0) readonly buffer InstanceInput
{
    InstanceData inputRows[];
};
layout(std430, binding = 1) writeonly buffer InstanceOutputLOD0
{
    InstanceData outputRows[];
};

layout(location = 0) uniform uint InstacneNum;
layout(location = 1) uniform vec3 Center;
layout(location = 2) uniform vec3 Extent;

uniform vec2 ScreenSize;
uniform sampler2D HiZMap;
uniform int HiZTest;

const float kSmallFeaturePixels = 2.0;
const uint kRowCount = 4u;
// Most texels read from the chain for one instance: at the level chosen,
// the rectangle covers at most this many, whatever its shape, so that a
// long thin rectangle (a slab or a roof seen edge on) is read at a level
// where its few rows do not take in what lies above and below it.
const int kTexelBudget = 64;

// The farthest depth over the texels [a, b] of level L (at most
// kTexelBudget of them).
#define KV_FARTHEST_AT(L)                                                   \
    case L:                                                                 \
    {                                                                       \
        ivec2 last = textureSize(HiZMap, L) - 1;                            \
        ivec2 a = min(low >> L, last);                                      \
        ivec2 b = min(high >> L, last);                                     \
        for (int y = a.y; y <= b.y; ++y)                                    \
            for (int x = a.x; x <= b.x; ++x)                                \
                d = max(d, texelFetch(HiZMap, ivec2(x, y), L).r);           \
        break;                                                              \
    }

// The farthest depth of the chain over the pixels [low, high] (inclusive,
// already clamped to the window), read at the first level at which the
// rectangle covers at most kTexelBudget texels: the finer the level, the
// less of the surroundings (background at the silhouette of an occluder)
// the test takes in with the rectangle.
float farthestDepth(ivec2 low, ivec2 high)
{
    // The chain goes down to one texel: floor(log2(longer side)) levels
    // above level 0.
    int top = findMSB(int(max(ScreenSize.x, ScreenSize.y)));
    int level = 0;
    ivec2 span = high - low + 1;
    while (level < top && span.x * span.y > kTexelBudget)
    {
        ++level;
        span = (high >> level) - (low >> level) + 1;
    }
    // Every fetch names its level as a constant: a level computed per
    // invocation is not honoured by every driver (llvmpipe's compute stage
    // reads the wrong level).
    float d = 0.0;
    switch (level)
    {
        KV_FARTHEST_AT(0)
        KV_FARTHEST_AT(1)
        KV_FARTHEST_AT(2)
        KV_FARTHEST_AT(3)
        KV_FARTHEST_AT(4)
        KV_FARTHEST_AT(5)
        KV_FARTHEST_AT(6)
        KV_FARTHEST_AT(7)
        KV_FARTHEST_AT(8)
        KV_FARTHEST_AT(9)
        KV_FARTHEST_AT(10)
        KV_FARTHEST_AT(11)
        KV_FARTHEST_AT(12)
        KV_FARTHEST_AT(13)
        KV_FARTHEST_AT(14)
    default:
        // Beyond any window size: nothing counts as hidden.
        d = 1.0;
    }
    return d;
}

bool mayBeVisible(mat4 instanceMatrix)
{
    mat4 toClip = kv_ViewProjectionMatrix * kv_ModelMatrix * instanceMatrix;
    vec4 corners[8];
    for (int i = 0; i < 8; ++i)
    {
        vec3 sign = vec3((i & 1) != 0 ? 1.0 : -1.0, (i & 2) != 0 ? 1.0 : -1.0, (i & 4) != 0 ? 1.0 : -1.0);
        corners[i] = toClip * vec4(Center + sign * Extent, 1.0);
    }

    // Frustum: x > w, x < -w, y > w, y < -w, z < -w.
    int beyond[5] = int[5](0, 0, 0, 0, 0);
    bool behindEye = false;
    for (int i = 0; i < 8; ++i)
    {
        vec4 c = corners[i];
        beyond[0] += c.x > c.w ? 1 : 0;
        beyond[1] += c.x < -c.w ? 1 : 0;
        beyond[2] += c.y > c.w ? 1 : 0;
        beyond[3] += c.y < -c.w ? 1 : 0;
        beyond[4] += c.z < -c.w ? 1 : 0;
        behindEye = behindEye || c.w <= 0.0;
    }
    for (int p = 0; p < 5; ++p)
        if (beyond[p] == 8)
            return false;
    if (behindEye)
        return true;

    vec3 low = vec3(1e30);
    vec3 high = vec3(-1e30);
    for (int i = 0; i < 8; ++i)
    {
        vec3 ndc = corners[i].xyz / corners[i].w;
        low = min(low, ndc);
        high = max(high, ndc);
    }
    vec2 lowPixel = (low.xy * 0.5 + 0.5) * ScreenSize;
    vec2 highPixel = (high.xy * 0.5 + 0.5) * ScreenSize;
    vec2 viewSize = highPixel - lowPixel;
    if (viewSize.x <= kSmallFeaturePixels && viewSize.y <= kSmallFeaturePixels)
        return false;
    if (HiZTest == 0)
        return true;

    // Every pixel the rectangle touches, not only those whose centres it
    // holds: a multisampled pass may see it there.
    ivec2 lastPixel = ivec2(ScreenSize) - 1;
    ivec2 first = clamp(ivec2(floor(lowPixel)), ivec2(0), lastPixel);
    ivec2 end = clamp(ivec2(floor(highPixel)), ivec2(0), lastPixel);
    // Window depth of the nearest corner (depth range 0 to 1).
    float nearest = low.z * 0.5 + 0.5;
    return nearest <= farthestDepth(first, end);
}

void main()
{
    uint id = gl_GlobalInvocationID.x;
    if (id >= InstacneNum)
        return;
    mat4 instanceMatrix = mat4(inputRows[id].InstanceMatrixRow, inputRows[id + InstacneNum].InstanceMatrixRow,
                               inputRows[id + 2u * InstacneNum].InstanceMatrixRow,
                               inputRows[id + 3u * InstacneNum].InstanceMatrixRow);
    if (!mayBeVisible(instanceMatrix))
        return;
    uint slot = atomicCounterIncrement(instanceCount);
    for (uint k = 0u; k < kRowCount; ++k)
        outputRows[slot + k * InstacneNum].InstanceMatrixRow = inputRows[id + k * InstacneNum].InstanceMatrixRow;
}
