// Put in front of the cascade geometry stage of the terrain casters.
#define KV_TERRAIN_CASTER
