// A shape of one colour: red, green, blue, alpha, each 0 to 1, as the blend function wants them.
#ifdef GL_FRAGMENT_PRECISION_HIGH
precision highp float;
#else
precision mediump float;
#endif

uniform vec4 SourceColor;

void main()
{
    gl_FragColor = SourceColor;
}
