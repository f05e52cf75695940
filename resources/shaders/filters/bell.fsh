// A picture blurred by a bell curve along one axis.
#ifdef GL_FRAGMENT_PRECISION_HIGH
precision highp float;
precision highp sampler2D;
#else
precision mediump float;
#endif

uniform sampler2D picture;
uniform vec2 pictureSize; // pixels
uniform vec2 direction; // to the next pixel
uniform float weights[10]; // of the pixel itself and of those beside it

vec4 texel(vec2 pixel)
{
    return texture2D(picture, (clamp(pixel, vec2(0.0), pictureSize - 1.0) + 0.5) / pictureSize);
}

void main()
{
    vec2 at = floor(gl_FragCoord.xy);
    vec4 sum = texel(at) * weights[0];
    for (int tap = 1; tap < 10; ++tap)
        sum += (texel(at + float(tap) * direction) + texel(at - float(tap) * direction)) * weights[tap];
    gl_FragColor = sum;
}
