// A picture of half the size: means of four pixels, rounded.
#ifdef GL_FRAGMENT_PRECISION_HIGH
precision highp float;
precision highp sampler2D;
#else
precision mediump float;
#endif

uniform sampler2D picture;
uniform vec2 pictureSize; // pixels
uniform bool isUpsideDown; // in memory the picture's last row is the first

vec4 texel(vec2 pixel)
{
    vec2 middle = (min(pixel, pictureSize - 1.0) + 0.5) / pictureSize;
    return texture2D(picture, isUpsideDown ? vec2(middle.x, 1.0 - middle.y) : middle);
}

void main()
{
    vec2 result = floor((pictureSize + 1.0) * 0.5);
    vec2 at = vec2(gl_FragCoord.x, isUpsideDown ? result.y - gl_FragCoord.y : gl_FragCoord.y);
    vec2 first = floor(at) * 2.0;
    vec4 sum = texel(first) + texel(first + vec2(1.0, 0.0)) + texel(first + vec2(0.0, 1.0)) + texel(first + 1.0);
    gl_FragColor = floor((sum * 255.0 + 2.002) * 0.25) / 255.0;
}
