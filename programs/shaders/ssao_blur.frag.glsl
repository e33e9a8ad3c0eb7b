// Softens the occlusion: the mean over the 3 by 3 texels around each pixel
// hides the pattern that the 4 by 4 noise tile leaves.

in vec2 texCord;
layout(location = 0) out vec4 FragColor;

uniform sampler2D gSSAOMap;

void main()
{
    vec2 texelSize = 1.0 / vec2(textureSize(gSSAOMap, 0));
    float result = 0.0;
    for (int x = -1; x <= 1; ++x)
    {
        for (int y = -1; y <= 1; ++y)
            result += texture(gSSAOMap, texCord + vec2(float(x), float(y)) * texelSize).r;
    }
    result /= 9.0;
    FragColor = vec4(result, result, result, 1.0);
}
