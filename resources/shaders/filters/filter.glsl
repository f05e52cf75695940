// What all filters share, put before each of them: how a pixel is looked up, and what becomes of the filter's answer.
// Places are in pixels, the middle of the first one, at the upper left, at (0.5, 0.5). Pictures hold colours multiplied
// by alpha. Pixels are looked up one by one and mixed here, as the processor's loops do it (platform/pixels/filters).
#ifdef GL_FRAGMENT_PRECISION_HIGH
precision highp float;
precision highp sampler2D;
#else
precision mediump float;
#endif

uniform sampler2D picture;
uniform vec2 pictureSize;
uniform bool isUpsideDown; // in memory the picture's last row is the first
uniform float strength; // how much of the filter shows, 0 to 1

uniform sampler2D asidePicture; // the second picture, for filters that look at one
uniform vec2 asideSize;
uniform float asideScale; // pixels of the second picture for one of the first
uniform vec2 asideShift; // where the first one's corner lies in it
uniform bool isAsideUpsideDown;

vec2 coordinates(vec2 pixel, vec2 size, bool upsideDown)
{
    vec2 middle = (pixel + 0.5) / size;
    return upsideDown ? vec2(middle.x, 1.0 - middle.y) : middle;
}

// The pixel that a place lies in; beyond the edge lies the edge.
vec4 texel(vec2 at)
{
    return texture2D(picture, coordinates(clamp(floor(at), vec2(0.0), pictureSize - 1.0), pictureSize, isUpsideDown));
}

vec4 asideTexel(vec2 pixel)
{
    return texture2D(asidePicture, coordinates(clamp(pixel, vec2(0.0), asideSize - 1.0), asideSize, isAsideUpsideDown));
}

// What lies between the four nearest pixels.
vec4 smoothTexel(vec2 at)
{
    vec2 upper = floor(at - 0.5), part = at - 0.5 - upper;
    vec4 above = mix(texel(upper), texel(upper + vec2(1.0, 0.0)), part.x);
    vec4 below = mix(texel(upper + vec2(0.0, 1.0)), texel(upper + 1.0), part.x);
    return mix(above, below, part.y);
}

vec4 smoothAside(vec2 at)
{
    vec2 upper = floor(at - 0.5), part = at - 0.5 - upper;
    vec4 above = mix(asideTexel(upper), asideTexel(upper + vec2(1.0, 0.0)), part.x);
    vec4 below = mix(asideTexel(upper + vec2(0.0, 1.0)), asideTexel(upper + 1.0), part.x);
    return mix(above, below, part.y);
}

// Where in the second picture a place of the first one lies.
vec2 asidePlace(vec2 at)
{
    return at * asideScale + asideShift;
}

vec4 straight(vec4 color)
{
    return vec4(min(color.rgb / max(color.a, 1.0 / 255.0), 1.0), color.a);
}

float grey(vec3 color)
{
    return color.r * 0.299 + color.g * 0.587 + color.b * 0.114;
}

// 0 before "from", 1 beyond "from" + "length", gently between.
float soft(float at, float from, float length)
{
    float t = clamp((at - from) / max(length, 0.0001), 0.0, 1.0);
    return t * t * (3.0 - (t + t));
}

// sin(2 pi x), the way the processor computes it.
float sineOfTurns(float x)
{
    float turn = x - floor(x + 0.5);
    float size = abs(turn);
    float angle = sign(turn) * min(size, 0.5 - size) * 6.2831853;
    float square = angle * angle;
    float sum = square / 362880.0 - 1.0 / 5040.0;
    sum = square * sum + 1.0 / 120.0;
    sum = square * sum - 1.0 / 6.0;
    return angle * (square * sum + 1.0);
}

float cosineOfTurns(float x)
{
    return sineOfTurns(x + 0.25);
}

#ifdef MOVES_PLACES
// The filter: where to look instead of at a place.
vec2 moved(vec2 at);

void main()
{
    vec2 at = vec2(gl_FragCoord.x, isUpsideDown ? pictureSize.y - gl_FragCoord.y : gl_FragCoord.y);
    // The picture is mirrored at its edges.
    gl_FragColor = smoothTexel(pictureSize - abs(pictureSize - abs(moved(at))));
}
#else
// The filter: what becomes of a straight colour at a place.
vec4 filtered(vec4 color, vec2 at);

void main()
{
    vec2 at = vec2(gl_FragCoord.x, isUpsideDown ? pictureSize.y - gl_FragCoord.y : gl_FragCoord.y);
    vec4 given = texel(at);
    vec4 changed = filtered(straight(given), at);
    vec4 sent = vec4(clamp(changed.rgb, 0.0, 1.0) * changed.a, changed.a);
    gl_FragColor = mix(given, sent, strength);
}
#endif
