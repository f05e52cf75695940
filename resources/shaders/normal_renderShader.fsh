// The plain textured quad. Colours come out as the texture holds them, multiplied by alpha or not.
#ifdef GL_FRAGMENT_PRECISION_HIGH
precision highp float;
precision highp sampler2D;
#else
precision mediump float;
#endif

uniform sampler2D videoFrame;

varying vec2 textureCoordinate;

void main()
{
    gl_FragColor = texture2D(videoFrame, textureCoordinate);
}
