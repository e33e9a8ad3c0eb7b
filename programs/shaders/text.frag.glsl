// Text labels (kind 13). The text library's own state set chooses the glyph
// technique through defines; their values come from that state set.
#pragma import_defines(BACKDROP_COLOR, SHADOW, OUTLINE, SIGNED_DISTANCE_FIELD, TEXTURE_DIMENSION, GLYPH_DIMENSION)

#define NUM_CLIP 6

#ifndef TEXTURE_DIMENSION
#define TEXTURE_DIMENSION 1024.0
#endif
#ifndef GLYPH_DIMENSION
#define GLYPH_DIMENSION 32.0
#endif

// Our OpenSceneGraph build keeps glyph coverage in alpha textures (GL_ALPHA,
// or GL_LUMINANCE_ALPHA with the distance field in luminance), so coverage
// is the alpha channel and the distance field reads from green, which
// luminance fills as well.
#define GLYPH_COVERAGE a
#define GLYPH_DISTANCE g

uniform sampler2D glyphTexture;

in vec2 texCoord;
in vec4 vertexColor;

#ifdef _USE_CLIP_TEST
uniform int ClipPlaneCount_I;
in float clipDistance[NUM_CLIP];
#endif

layout(location = 0) out vec4 osg_FragColor;

#ifdef SIGNED_DISTANCE_FIELD

float distanceFromEdge(vec2 tc)
{
    float centerValue = textureLod(glyphTexture, tc, 0.0).GLYPH_DISTANCE;
    if (centerValue == 0.0)
        return -1.0;
    return (centerValue - 0.5) * (1.0 / 6.0) * 1.41;
}

vec4 distanceFieldColorSample(float edgeDistance, float blendWidth, float blendHalfWidth)
{
#ifdef OUTLINE
    float outlineWidth = OUTLINE * 0.5;
    if (edgeDistance > blendHalfWidth)
        return vertexColor;
    if (edgeDistance > -blendHalfWidth)
        return mix(vertexColor, vec4(BACKDROP_COLOR.rgb, BACKDROP_COLOR.a * vertexColor.a),
                   smoothstep(0.0, 1.0, (blendHalfWidth - edgeDistance) / blendWidth));
    if (edgeDistance > blendHalfWidth - outlineWidth)
        return vec4(BACKDROP_COLOR.rgb, BACKDROP_COLOR.a * vertexColor.a);
    if (edgeDistance > -blendHalfWidth - outlineWidth)
        return vec4(BACKDROP_COLOR.rgb,
                    vertexColor.a * ((blendHalfWidth + outlineWidth + edgeDistance) / blendWidth));
    return vec4(0.0);
#else
    if (edgeDistance > blendHalfWidth)
        return vertexColor;
    if (edgeDistance > -blendHalfWidth)
        return vec4(vertexColor.rgb,
                    vertexColor.a * smoothstep(1.0, 0.0, (blendHalfWidth - edgeDistance) / blendWidth));
    return vec4(0.0);
#endif
}

vec4 textColor(vec2 tc)
{
    float centerDistance = distanceFromEdge(tc);

    vec2 dx = dFdx(tc) * 0.75;
    vec2 dy = dFdy(tc) * 0.75;
    float distanceAcrossPixel = length(dx + dy) * (TEXTURE_DIMENSION / GLYPH_DIMENSION);

    float numSamplesX = clamp(TEXTURE_DIMENSION * length(dx), 2.0, 4.0);
    float numSamplesY = clamp(TEXTURE_DIMENSION * length(dy), 2.0, 4.0);
    float blendWidth = 1.5 * distanceAcrossPixel / max(numSamplesX, numSamplesY);
    float blendHalfWidth = blendWidth * 0.5;

    if (centerDistance - blendHalfWidth > distanceAcrossPixel)
        return vertexColor;

#ifdef OUTLINE
    if (centerDistance + blendHalfWidth + OUTLINE * 0.5 < -distanceAcrossPixel)
        return vec4(0.0);
#else
    if (centerDistance + blendHalfWidth < -distanceAcrossPixel)
        return vec4(0.0);
#endif

    vec4 total = vec4(0.0);
    vec2 stepX = dx / numSamplesX;
    vec2 stepY = dy / numSamplesY;
    vec2 start = tc - dx * 0.5 - dy * 0.5 + stepX * 0.5 + stepY * 0.5;
    float count = 0.0;
    for (float i = 0.0; i < numSamplesY; ++i)
    {
        for (float j = 0.0; j < numSamplesX; ++j)
        {
            vec2 sampleCoord = start + stepX * j + stepY * i;
            vec4 c = distanceFieldColorSample(distanceFromEdge(sampleCoord), blendWidth, blendHalfWidth);
            total += vec4(c.rgb * c.a, c.a);
            count += 1.0;
        }
    }
    if (total.a == 0.0)
        return vec4(0.0);
    return vec4(total.rgb / total.a, total.a / count);
}

#else

vec4 textColor(vec2 tc)
{
#ifdef OUTLINE
    float alpha = texture(glyphTexture, tc).GLYPH_COVERAGE;
    float delta = 1.6 * OUTLINE * GLYPH_DIMENSION / TEXTURE_DIMENSION;
    vec2 origin = tc - vec2(delta, delta) * 0.5;
    float outlineAlpha = 0.0;
    float backgroundAlpha = 1.0;
    for (int i = 0; i < 3; ++i)
    {
        for (int j = 0; j < 3; ++j)
        {
            float a = texture(glyphTexture, origin + vec2(float(j), float(i)) * delta * 0.5).GLYPH_COVERAGE;
            outlineAlpha = max(outlineAlpha, a);
            backgroundAlpha *= 1.0 - a;
        }
    }
    float lod = textureQueryLod(glyphTexture, tc).x;
    if (lod < 1.0)
        outlineAlpha = mix(1.0 - backgroundAlpha, outlineAlpha, lod);
    outlineAlpha = clamp(outlineAlpha, alpha, 1.0);
    if (outlineAlpha == 0.0)
        return vec4(0.0);
    vec3 rgb = mix(BACKDROP_COLOR.rgb, vertexColor.rgb, smoothstep(0.0, 1.0, alpha));
    return vec4(rgb, vertexColor.a * smoothstep(0.0, 1.0, outlineAlpha));
#else
    float alpha = texture(glyphTexture, tc).GLYPH_COVERAGE;
    return vec4(vertexColor.rgb, vertexColor.a * alpha);
#endif
}

#endif

// Labels draw no edges of their own.
const vec4 kTextEdgeNormal = vec4(0.0, 0.0, 0.0, 1.0);

void main()
{
#ifdef _USE_CLIP_TEST
    for (int i = 0; i < NUM_CLIP; ++i)
    {
        if (i < ClipPlaneCount_I && clipDistance[i] > 0.0)
            discard;
    }
#endif

    // The label's background box carries no glyph coordinates.
    if (texCoord.x < 0.0 && texCoord.y < 0.0)
    {
        osg_FragColor = vertexColor;
        writeFrameOutputs(kTextEdgeNormal);
        return;
    }

#ifdef SHADOW
    float glyphAlphaFloor = 0.5;
#ifdef SIGNED_DISTANCE_FIELD
    glyphAlphaFloor = 0.6;
#endif
    vec2 shadowOffset = SHADOW * (-GLYPH_DIMENSION / TEXTURE_DIMENSION);
    vec4 shadowColor = textColor(texCoord + shadowOffset);
    shadowColor.rgb = BACKDROP_COLOR.rgb;
    vec4 glyphColor = textColor(texCoord);
    shadowColor.a = pow(shadowColor.a, glyphAlphaFloor);
    glyphColor.a = pow(glyphColor.a, glyphAlphaFloor);
    vec4 color = mix(shadowColor, glyphColor, glyphColor.a);
#else
    vec4 color = textColor(texCoord);
#endif

    if (color.a == 0.0)
        discard;

    osg_FragColor = color;
    writeFrameOutputs(kTextEdgeNormal);
}
