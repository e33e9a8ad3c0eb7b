// Depth-only fragment stage of animated clipping: what the animation has cut
// away must not occlude either.

in float vAnimationClipTest;

void main()
{
    if (vAnimationClipTest > 0.0)
        discard;
}
