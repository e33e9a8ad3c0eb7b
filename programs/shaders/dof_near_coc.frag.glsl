// One direction of the separable filters over the near circle of
// confusion: the maximum (DOF_NEAR_MAX), so that the near blur reaches over
// the edges of objects in focus, or else the mean, which softens it.
in vec2 texCord;
out vec4 fragColor;

layout(binding = 0) uniform sampler2D s_NearCoC;
uniform vec2 u_PixelSize;
uniform vec2 u_Direction;

const int kRadius = 6;

void main()
{
    float result = 0.0;
    for (int i = -kRadius; i <= kRadius; ++i)
    {
        float coc = texture(s_NearCoC, texCord + u_Direction * u_PixelSize * float(i)).r;
#ifdef DOF_NEAR_MAX
        result = max(result, coc);
#else
        result += coc;
#endif
    }
#ifndef DOF_NEAR_MAX
    result /= float(2 * kRadius + 1);
#endif
    fragColor = vec4(result, 0.0, 0.0, 1.0);
}
