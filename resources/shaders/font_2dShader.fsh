// Letters from an atlas, whose alpha is their shape and multiplies its colours: white for letters that take the
// text's colour, emoji have their own. The result is not multiplied by alpha.
#ifdef GL_FRAGMENT_PRECISION_HIGH
precision highp float;
#else
precision mediump float;
#endif

uniform sampler2D videoFrame;
uniform vec4 SourceColor;

varying vec2 textureCoordinate;

void main()
{
    vec4 shape = texture2D(videoFrame, textureCoordinate);
    gl_FragColor = SourceColor * vec4(shape.rgb / max(shape.a, 1.0 / 255.0), shape.a);
}
