// What "diaphaneity_Shader" draws, for blend functions that take the texture's colours as they are. "opacity" is what it
// multiplies alpha by, and what it multiplies the colours by: the same where alpha multiplies them in the texture, else
// 1. One multiplication of four channels for each pixel is what Mesa's software renderer draws several times as fast as
// anything else.
#ifdef GL_FRAGMENT_PRECISION_HIGH
precision highp float;
precision highp sampler2D;
#else
precision mediump float;
#endif

uniform sampler2D videoFrame;
uniform vec4 opacity;

varying vec2 textureCoordinate;

void main()
{
    gl_FragColor = texture2D(videoFrame, textureCoordinate) * opacity;
}
