// Diffuse light from the sky cube: the cosine-weighted mean over the
// hemisphere around each direction, summed on a regular grid of angles.
// The cube is small and this runs often, so the grid is coarse.

in vec3 gs_WorldPos;

layout(binding = 0) uniform samplerCube environmentMap;

layout(location = 0) out vec4 FragColor;

const float PI = 3.14159265359;
const float sampleDelta = 0.3;

void main()
{
    vec3 N = normalize(gs_WorldPos);
    vec3 up = vec3(0.0, 1.0, 0.0);
    vec3 right = normalize(cross(up, N));
    up = normalize(cross(N, right));

    vec3 irradiance = vec3(0.0);
    float samples = 0.0;
    for (float phi = 0.0; phi < 2.0 * PI; phi += sampleDelta) {
        for (float theta = 0.0; theta < 0.5 * PI; theta += sampleDelta) {
            vec3 tangentSample = vec3(sin(theta) * cos(phi), sin(theta) * sin(phi), cos(theta));
            vec3 sampleVec = tangentSample.x * right + tangentSample.y * up + tangentSample.z * N;
            irradiance += texture(environmentMap, sampleVec).rgb * cos(theta) * sin(theta);
            samples += 1.0;
        }
    }
    FragColor = vec4(PI * irradiance / samples, 1.0);
}
