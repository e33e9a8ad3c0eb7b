#version 420 core
// The mask picture tiles the screen at its own pixel size instead of being
// stretched: viewport pixels over picture pixels, with repeat wrapping.

in vec2 texCord;

uniform sampler2D waterMask;
uniform vec2 waterMaskSize;
uniform vec2 viewPort;

layout(location = 0) out vec4 fragColor;

void main()
{
    vec2 realUV = texCord * viewPort / waterMaskSize;
    fragColor = texture(waterMask, realUV);
    if (fragColor.a == 0.0)
        discard;
}
