// A video with one colour keyed out. Every pixel is taken as a mixture of the key colour and something in front of
// it; the share of the key colour decides the opacity, and is then taken out of the colour, so that hair, glass and
// motion blur keep no fringe. "maxEclosion" is the width of the soft edge in shares of the key colour: 0 cuts hard,
// 0.75 lets the opacity follow the mixture over its whole range.
#ifdef GL_FRAGMENT_PRECISION_HIGH
precision highp float;
precision highp sampler2D;
#else
precision mediump float;
#endif

uniform sampler2D videoFrame;
uniform vec4 chromaKeyColor;
uniform float maxEclosion;
// What the blend function wants: x, colours that alpha and opacity multiply; y, colours that opacity alone does.
uniform vec2 sentColors;

varying vec2 textureCoordinate;

// From this share on a pixel is all backdrop: backdrops are lit unevenly, and video codecs blur colour.
const float fullShare = 0.75;

// A key colour of less saturation is taken as grey.
const float leastSaturation = 0.04;

// How far apart the channels are, pair by pair: what a colour has besides grey.
vec3 differences(vec3 color)
{
    return color.rgb - color.gbr;
}

// The share of the key colour, 0 to 1: x to cut by, y to free the colour by. With grey in front, each pair of
// channels shows the key's difference times the share. A coloured front bends the pairs apart: the least of them is
// certain and finds no green in yellow or cyan, but misses it at the rim of orange and red; their mean fits skin and
// hair, but finds green in yellow. So the least cuts, and the mean counts the more the surer it is that there is key
// colour at all.
vec2 keyShare(vec3 color)
{
    vec3 keyDifferences = differences(chromaKeyColor.rgb);
    vec3 sizes = abs(keyDifferences);
    float saturation = max(max(sizes.x, sizes.y), sizes.z);
    // A key without hue (black, white, grey) is judged by the distance of the colours.
    if (saturation < leastSaturation) return vec2(clamp(1.0 - distance(color, chromaKeyColor.rgb), 0.0, 1.0));
    // Channels that are nearly alike in the key tell nothing.
    vec3 counted = step(0.5 * saturation, sizes);
    vec3 shares = differences(color) / mix(vec3(1.0), keyDifferences, counted);
    float mean = dot(shares, counted) / dot(counted, vec3(1.0));
    vec3 judged = mix(vec3(1.0), shares, counted);
    float least = min(min(judged.x, judged.y), judged.z);
    float freed = min(mix(least, mean, 0.3) + 2.0 * max(least, 0.0), mean);
    return clamp(vec2(least, freed), 0.0, 1.0);
}

vec4 sent(vec3 color, float alpha, float opacity)
{
    float factor = mix(mix(1.0, opacity, sentColors.y), alpha * opacity, sentColors.x);
    return vec4(color * factor, alpha * opacity);
}

void main()
{
    vec4 color = texture2D(videoFrame, textureCoordinate);
    vec2 share = keyShare(color.rgb);
    float edge = clamp(maxEclosion, 0.001, fullShare);
    float alpha = clamp((fullShare - share.x) / edge, 0.0, 1.0);
    vec3 front = (color.rgb - share.y * chromaKeyColor.rgb) / max(1.0 - share.y, 1.0 - fullShare);
    gl_FragColor = sent(clamp(front, 0.0, 1.0), color.a, alpha);
}
