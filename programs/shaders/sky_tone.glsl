// Radiance to display colour for everything drawn from the atmosphere
// tables: an exposure curve against the white point of the sun's spectrum,
// then gamma. The curve never clips, so a bright sky keeps its gradient.

// The sun's colour as the tables see it, so that direct sunlight at noon
// comes out white.
const vec3 white_point = vec3(1.0824144146209054, 0.96755588068390119, 0.95002970469519343);
const vec3 earth_center = vec3(0.0, 0.0, -6360.0);

vec3 skyTone(vec3 radiance, float intensity)
{
    return pow(vec3(1.0) - exp(-radiance / white_point * intensity), vec3(1.0 / 2.2));
}

// Below this height of the light the sun has set: the moon takes over in
// the sky, and lit surfaces keep only their ambient term.
bool sunIsUp(vec3 lightDirection)
{
    return lightDirection.z > -0.1;
}
