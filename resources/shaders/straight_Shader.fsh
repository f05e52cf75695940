// A textured quad with an opacity of its own for blend functions that want colours which alpha does not multiply.
#ifdef GL_FRAGMENT_PRECISION_HIGH
precision highp float;
precision highp sampler2D;
#else
precision mediump float;
#endif

uniform sampler2D videoFrame;
uniform float aplae;
uniform bool isPreMultiplication;

varying vec2 textureCoordinate;

// Pictures, texts and render targets hold colours multiplied by their alpha; blending wants them straight.
// Where alpha is 0 the colour is 0 too, and stays so.
vec3 straightColor(vec4 color)
{
    return isPreMultiplication ? color.rgb / max(color.a, 1.0 / 255.0) : color.rgb;
}

void main()
{
    vec4 color = texture2D(videoFrame, textureCoordinate);
    gl_FragColor = vec4(straightColor(color), color.a * aplae);
}
