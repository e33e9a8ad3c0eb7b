// The vertex half of the motion output of the main colour pass: where the
// vertex is now and where it was last frame, for the velocity the fragment
// stage writes (frame_outputs). Shared by the surface, flat and text vertex
// stages; after blocks.

#ifdef _USE_TAA
out vec4 projPosition;
out vec4 lastProjPosition;
#endif

// position: the vertex in the node's space (after the instance's matrix,
// where there is one). Call after gl_Position is written.
void kvWriteMotion(vec4 position)
{
#ifdef _USE_TAA
    projPosition = gl_Position;
    lastProjPosition = kv_lastViewProjectionMatrix * kv_lastModelMatrix * position;
#endif
}
