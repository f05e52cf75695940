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

// The share of the key colour, 0 to 1. Only colours within 45 degrees of the key's hue hold any: yellow and cyan
// keep theirs before a green backdrop.
float keyShare(vec3 color)
{
    vec2 key = chroma(chromaKeyColor.rgb);
    float keyLength = length(key);
    // A key without hue (black, white, grey) is judged by the distance of the colours.
    if (keyLength < 0.02) return clamp(1.0 - distance(color, chromaKeyColor.rgb), 0.0, 1.0);
    vec2 axis = key / keyLength;
    vec2 point = chroma(color);
    float along = dot(point, axis);
    float aside = abs(point.x * axis.y - point.y * axis.x);
    return clamp((along - aside) / keyLength, 0.0, 1.0);
}

void main()
{
    vec4 color = texture2D(videoFrame, textureCoordinate);
    float share = keyShare(color.rgb);
    float edge = clamp(maxEclosion, 0.001, fullShare);
    float alpha = clamp((fullShare - share) / edge, 0.0, 1.0);
    vec3 front = (color.rgb - share * chromaKeyColor.rgb) / max(1.0 - share, 1.0 - fullShare);
    gl_FragColor = vec4(clamp(front, 0.0, 1.0), color.a * alpha);
}
