// A picture of any size, its colours multiplied by alpha.
#ifdef GL_FRAGMENT_PRECISION_HIGH
precision highp float;
precision highp sampler2D;
#else
precision mediump float;
#endif

uniform sampler2D picture;
uniform vec2 pictureSize; // of the result, pixels
uniform bool isPreMultiplication;

void main()
{
    vec4 color = texture2D(picture, gl_FragCoord.xy / pictureSize);
    gl_FragColor = isPreMultiplication ? color : vec4(color.rgb * color.a, color.a);
}
