#ifdef GL_ES
precision mediump float;
#endif
// Bottom colour at the lowest pixel row, top colour at the viewport height.

uniform vec4 topColor;
uniform vec4 bottomColor;
uniform float height;

void main()
{
    gl_FragColor = mix(bottomColor, topColor, gl_FragCoord.y / height);
}
