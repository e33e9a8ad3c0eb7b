// The two moments of depth that a variance shadow map stores, shared by
// the caster fragment stages. The second moment takes the depth's slope
// within the pixel into account, which keeps sloped receivers from
// shadowing themselves.

in vec4 lightPositionGs;
layout(location = 0) out vec4 momentsOut;

vec4 kvShadowMoments()
{
    float depth = lightPositionGs.z / lightPositionGs.w * 0.5 + 0.5;
    float dx = dFdx(depth);
    float dy = dFdy(depth);
    float moment2 = depth * depth + 0.25 * (dx * dx + dy * dy);
    return vec4(depth, moment2, 0.0, 1.0);
}
