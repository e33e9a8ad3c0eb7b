// The material's colour texture: a 64-bit handle where the driver has
// bindless textures, a texture unit where it does not.
#ifndef _USE_NOT_BINDLESS_TEXTURE
layout(bindless_sampler) uniform sampler2D Albedo_Tx;
#else
uniform sampler2D Albedo_Tx;
#endif
