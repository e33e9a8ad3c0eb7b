// One level of the maximum-depth chain: each texel takes the farthest depth
// of the texels of the level below that it covers. Where the level below
// has an odd size, its last column or row has no partner, so the last texel
// here takes it as well: every pixel of the window then lies under exactly
// one texel of every level, the last texel of a row or column covering the
// tail (x >> level, clamped to the level's size, finds it).
// The texture's base level is the level below while this one is drawn.

layout(binding = 0) uniform sampler2D lastMip;

in vec2 texCord;

void main()
{
    ivec2 below = textureSize(lastMip, 0);
    ivec2 last = below - 1;
    ivec2 size = max(below >> 1, ivec2(1));
    ivec2 texel = ivec2(gl_FragCoord.xy);
    ivec2 first = texel * 2;
    // An odd level below hands its last column or row to the last texel.
    ivec2 end = first + 1;
    if (texel.x == size.x - 1 && (below.x & 1) == 1)
        end.x = first.x + 2;
    if (texel.y == size.y - 1 && (below.y & 1) == 1)
        end.y = first.y + 2;

    float farthest = 0.0;
    for (int y = first.y; y <= end.y; ++y)
        for (int x = first.x; x <= end.x; ++x)
            farthest = max(farthest, texelFetch(lastMip, min(ivec2(x, y), last), 0).r);
    gl_FragDepth = farthest;
}
