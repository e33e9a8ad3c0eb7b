// Unlit flat colour: the material colour as it is, with no lighting, tone
// mapping or gamma.

uniform vec4 AlbedoColor_V4;

layout(location = 0) out vec4 outColor;

void main()
{
    outColor = AlbedoColor_V4;
#ifdef _USE_HIGHLIGHT_STYLE
    if (isHighlightGap())
        outColor = vec4(0.0, 0.0, 0.0, AlbedoColor_V4.w);
#endif
    // Flat geometry (lines, markers) draws no edges of its own.
    writeFrameOutputs(vec4(0.0));
}
