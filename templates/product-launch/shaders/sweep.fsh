#ifdef GL_FRAGMENT_PRECISION_HIGH
precision highp float;
#else
precision mediump float;
#endif

uniform sampler2D videoFrame;
uniform float aplae;
varying vec2 textureCoordinate;

// A band of light that crosses the picture as the variable goes from 0 to 1.
void main()
{
    float along = textureCoordinate.x + 0.35 * textureCoordinate.y;
    float band = 1.0 - smoothstep(0.0, 0.16, abs(along - mix(-0.3, 1.65, aplae)));
    gl_FragColor = vec4(1.0, 0.95, 0.86, 0.55 * band * texture2D(videoFrame, textureCoordinate).r);
}
