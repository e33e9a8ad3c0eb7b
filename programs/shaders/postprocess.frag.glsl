// The final pass: the chain's last result to the window, optionally through
// the colour grading table. The defines in front of this text are written by
// the post-process node, not by OSG's define variants.
in vec2 texCord;
out vec4 FragColor;

layout(binding = 0) uniform sampler2D texMap;

#ifdef _USE_COLOR_GRADING
uniform sampler2D texLUT;

// The table holds 64 blue slices of 64 x 64 (red across, green up), laid
// out 8 by 8 in a 512 x 512 image; slice 0 sits in the top-left block.
#define COLORBLOCKS 64.0
#define TEXWIDTH 512.0
#define TEXHEIGHT 512.0
#define COLORNUMX 8
#define COLORNUMY 8

// Red and green land on texel centres: a slice is 64 texels wide, so value
// v sits at texel v * 63, and + 0.5 is that texel's centre. Without the
// half-texel terms a value of 0 or 1 falls on the seam between two slices,
// and linear filtering would blend in the neighbouring slice.
vec2 slicePosition(float slice, vec3 colour)
{
    float row = floor(slice / float(COLORNUMX));
    float col = slice - row * float(COLORNUMX);
    float rOffset = (colour.r * (COLORBLOCKS - 1.0) + 0.5) / TEXWIDTH;
    float gOffset = 1.0 / float(COLORNUMY) - (colour.g * (COLORBLOCKS - 1.0) + 0.5) / TEXHEIGHT;
    return vec2(col / float(COLORNUMX) + rOffset, (float(COLORNUMY - 1) - row) / float(COLORNUMY) + gOffset);
}

vec3 grade(vec3 colour)
{
    float cell = colour.b * (COLORBLOCKS - 1.0);
    float low = floor(cell);
    float high = min(ceil(cell), COLORBLOCKS - 1.0);
    vec3 lowColour = texture(texLUT, slicePosition(low, colour)).rgb;
    vec3 highColour = texture(texLUT, slicePosition(high, colour)).rgb;
    return mix(lowColour, highColour, fract(cell));
}
#endif

void main()
{
    vec3 colour = texture(texMap, texCord).rgb;
#ifdef _USE_COLOR_GRADING
    colour = grade(colour);
#endif
    FragColor = vec4(colour, 1.0);
}
