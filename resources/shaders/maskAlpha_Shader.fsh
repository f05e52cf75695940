// A textured quad that shows only where its mask picture is bright: white shows, black and transparent hide. The
// mask stays where the quad is; the texture matrix moves the picture behind it.
#ifdef GL_FRAGMENT_PRECISION_HIGH
precision highp float;
precision highp sampler2D;
#else
precision mediump float;
#endif

uniform sampler2D videoFrame;
uniform sampler2D frameTexture;
uniform float aplae;
uniform bool isPreMultiplication;

varying vec2 textureCoordinate;
varying vec2 place;

// Pictures, texts and render targets hold colours multiplied by their alpha; blending wants them straight.
// Where alpha is 0 the colour is 0 too, and stays so.
vec3 straightColor(vec4 color)
{
    return isPreMultiplication ? color.rgb / max(color.a, 1.0 / 255.0) : color.rgb;
}

void main()
{
    vec4 color = texture2D(videoFrame, textureCoordinate);
    float mask = dot(texture2D(frameTexture, place).rgb, vec3(0.299, 0.587, 0.114));
    gl_FragColor = vec4(straightColor(color), color.a * mask * aplae);
}
