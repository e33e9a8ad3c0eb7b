// Fragment stage of the terrain casters (kind 16): no alpha test, but the
// terrain mask cuts away what it hides, as it does for the visible terrain.

in vec3 worldPositionGs;

uniform bool TerrainMask_Tx_Enabled;
uniform sampler2D TerrainMask_Tx;
uniform mat4 kv_terrainMaskProjectMatrix;
uniform mat4 kv_terrainMaskViewMatrix;

void main()
{
    if (TerrainMask_Tx_Enabled)
    {
        vec4 maskPos = kv_terrainMaskProjectMatrix * kv_terrainMaskViewMatrix * vec4(worldPositionGs, 1.0);
        vec2 maskUV = maskPos.xy / maskPos.w * 0.5 + 0.5;
        if (texture(TerrainMask_Tx, maskUV).r < 1.0)
            discard;
    }
    momentsOut = kvShadowMoments();
}
