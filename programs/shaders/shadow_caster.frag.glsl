// Fragment stage of the shadow casters (kinds 14 and 15). The pass gives
// every caster a transparent default texture and colour; a material brings
// its own, so what is (nearly) see-through casts no shadow.

#define KV_CASTER_ALPHA_CUT 0.2

in vec2 uvGs;

uniform vec4 AlbedoColor_V4;

void main()
{
    vec4 inColor = texture(Albedo_Tx, uvGs);
    float alpha = inColor.a + AlbedoColor_V4.a;
    if (alpha < KV_CASTER_ALPHA_CUT)
        discard;
    momentsOut = kvShadowMoments();
}
