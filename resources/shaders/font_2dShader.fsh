// Letters of one colour from an atlas, whose alpha is their shape. The colour is not multiplied by alpha.
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
    float shape = texture2D(videoFrame, textureCoordinate).a;
    gl_FragColor = vec4(SourceColor.rgb, SourceColor.a * shape);
}
