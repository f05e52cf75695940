// A video with one colour keyed out. Every pixel is taken as a mixture of the key colour and something in front of
// it; the share of the key colour decides the opacity, and is then taken out of the colour, so that hair, glass and
// motion blur keep no fringe. "maxEclosion" is the width of the soft edge in shares of the key colour: 0 cuts hard,
// 0.65 lets the opacity follow the mixture over its whole range.
#ifdef GL_FRAGMENT_PRECISION_HIGH
precision highp float;
#else
precision mediump float;
#endif

uniform sampler2D videoFrame;
uniform vec4 chromaKeyColor;
uniform float maxEclosion;

varying vec2 textureCoordinate;

// From this share on a pixel is all backdrop: backdrops are lit unevenly, and video codecs blur colour.
const float fullShare = 0.65;

// Colour without brightness: blue and red difference, so that shadows on the backdrop matter less.
vec2 chroma(vec3 color)
{
    return vec2(dot(color, vec3(-0.168736, -0.331264, 0.5)), dot(color, vec3(0.5, -0.418688, -0.081312)));
}

// The share of the key colour, 0 to 1: how far the pixel's hue reaches along the key's, less what it has of other
// hues, weighed by `narrowness`. At 1 only colours within 45 degrees of the key's hue hold any share.
float keyShare(vec3 color, float narrowness)
{
    vec2 key = chroma(chromaKeyColor.rgb);
    float keyLength = length(key);
    // A key without hue (black, white, grey) is judged by the distance of the colours.
    if (keyLength < 0.02) return clamp(1.0 - distance(color, chromaKeyColor.rgb), 0.0, 1.0);
    vec2 axis = key / keyLength;
    vec2 point = chroma(color);
    float along = dot(point, axis);
    float aside = abs(point.x * axis.y - point.y * axis.x);
    return clamp((along - narrowness * aside) / keyLength, 0.0, 1.0);
}

void main()
{
    vec4 color = texture2D(videoFrame, textureCoordinate);
    float edge = clamp(maxEclosion, 0.001, fullShare);
    float alpha = clamp((fullShare - keyShare(color.rgb, 1.0)) / edge, 0.0, 1.0);
    // The colour is freed over a wider range of hues than is cut: yellow and cyan stay, but the mixture of red
    // clothes or skin with the backdrop does not stay green.
    float spill = keyShare(color.rgb, 0.3);
    vec3 front = (color.rgb - spill * chromaKeyColor.rgb) / max(1.0 - spill, 1.0 - fullShare);
    gl_FragColor = vec4(clamp(front, 0.0, 1.0), color.a * alpha);
}
