// A video whose opacity comes from a second video: the brightness of the mask frame is the alpha of the master
// frame.
#ifdef GL_FRAGMENT_PRECISION_HIGH
precision highp float;
precision highp sampler2D;
#else
precision mediump float;
#endif

uniform sampler2D videoFrame;
uniform sampler2D frameTexture;

varying vec2 textureCoordinate;

void main()
{
    vec4 color = texture2D(videoFrame, textureCoordinate);
    float mask = dot(texture2D(frameTexture, textureCoordinate).rgb, vec3(0.299, 0.587, 0.114));
    gl_FragColor = vec4(color.rgb, color.a * mask);
}
