// The extra colour attachments of the main colour pass, written by every
// program that draws into it, and the highlight pattern. The vertex half of
// the motion output is frame_motion.

#ifdef _USE_TAA
in vec4 projPosition;
in vec4 lastProjPosition;
// No writer yet: it reads as zero, i.e. no jitter.
uniform vec4 current_prev_jitter;
layout(location = 1) out vec4 velocityOut;

// Screen-space motion since the last frame, jitter removed.
vec4 screenVelocity()
{
    vec2 current = projPosition.xy / projPosition.w * 0.5 + 0.5;
    vec2 prev = lastProjPosition.xy / lastProjPosition.w * 0.5 + 0.5;
    current -= current_prev_jitter.xy * 0.5;
    prev -= current_prev_jitter.zw * 0.5;
    return vec4(current - prev, 0.0, 1.0);
}
#endif

#ifdef _USE_SILHOUETTE
layout(location = 2) out vec4 normalOut;
#endif

#ifdef _USE_VOLUMETRICLIGHT
layout(location = 3) out vec4 volumetricLightOut;
#endif

// Selected objects are overlaid with a one-pixel checkerboard fixed to the
// screen. The parity of x + y equals that of y - x, and avoids % on negatives.
bool isHighlightGap()
{
    ivec2 p = ivec2(gl_FragCoord.xy);
    return ((p.x + p.y) & 1) != 0;
}

// The end of every program of the main colour pass, after its colour:
// motion, volumetric-light occlusion and the normal for the edge pass
// (edgeNormal, already encoded; what draws no edges of its own passes zero).
void writeFrameOutputs(vec4 edgeNormal)
{
#ifdef _USE_TAA
    velocityOut = screenVelocity();
#endif
#ifdef _USE_VOLUMETRICLIGHT
    // Whatever is drawn occludes the volumetric light.
    volumetricLightOut = vec4(0.0, 0.0, 0.0, 1.0);
#endif
#ifdef _USE_SILHOUETTE
    normalOut = edgeNormal;
#endif
}
