// Depth-only vertex stage (kinds 20 to 24): the position and the clipping
// that the colour pass applies, so that both passes agree on coverage. The
// shared placement and clipping come from world_position.

// Always written: the clip-test fragment stage of kinds 23 and 24 reads it
// whatever the node's defines are.
out float vAnimationClipTest;

void main()
{
    vec4 worldPos = kvWorldPosition(kvModelMatrix());
    kvWriteClipDistances(worldPos);
    vAnimationClipTest = kvAnimationClipTest(worldPos);
    gl_Position = kv_ViewProjectionMatrix * worldPos;
}
