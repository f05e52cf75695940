// A textured quad with an opacity, an image filter, a border and round corners.
#ifdef GL_FRAGMENT_PRECISION_HIGH
precision highp float;
#else
precision mediump float;
#endif

uniform sampler2D videoFrame;
uniform bool isPreMultiplication;
uniform float aplae;
uniform vec2 textureSize;  // of the picture, pixels
uniform int filterType;  // 0 none, 1 grey, 2 sepia, 3 negative, 4 mosaic, 5 wave
uniform float RANGE;  // how much of the filter shows, 0 to 1
uniform float pixelSize;  // side of a mosaic's tile, pixels of the picture
uniform float filterNormalTime;  // 0 to 1: a wave runs through the picture once
uniform bool reflection;  // the lower half mirrors the upper one
uniform vec4 glColor;  // multiplies the picture
uniform vec2 frameSize;  // of the quad, in a unit of its own
uniform float pixelsAUnit;  // of the canvas, about
uniform float framew;  // width of the border, as a part of the quad's shorter side
uniform float cornerRadius;  // as a part of the quad's shorter side
uniform vec4 inputColor;  // of the border
// What the blend function wants: x, colours that alpha and opacity multiply; y, colours that opacity alone does.
uniform vec2 sentColors;

varying vec2 textureCoordinate;
varying vec2 place;

const float fullTurn = 6.2831853;
const float waves = 3.0;  // from top to bottom
const float waveHeight = 0.05;  // of the picture's width

// Pictures, texts and render targets hold colours multiplied by their alpha; blending wants them straight.
// Where alpha is 0 the colour is 0 too, and stays so.
vec3 straightColor(vec4 color)
{
    return isPreMultiplication ? color.rgb / max(color.a, 1.0 / 255.0) : color.rgb;
}

vec2 filteredPlace(vec2 at)
{
    if (reflection && place.y > 0.5) at.y = 1.0 - at.y;
    if (filterType == 4) {
        vec2 tile = vec2(max(pixelSize, 1.0)) / textureSize;
        at = mix(at, (floor(at / tile) + 0.5) * tile, RANGE);
    }
    if (filterType == 5) at.x += RANGE * waveHeight * sin(fullTurn * (waves * place.y - filterNormalTime));
    return at;
}

vec3 filteredColor(vec3 color)
{
    float grey = dot(color, vec3(0.299, 0.587, 0.114));
    vec3 other = color;
    if (filterType == 1) other = vec3(grey);
    if (filterType == 2) other = min(grey * vec3(1.2, 1.0, 0.8), 1.0);
    if (filterType == 3) other = 1.0 - color;
    return mix(color, other, RANGE);
}

vec4 sent(vec3 color, float alpha, float opacity)
{
    float factor = mix(mix(1.0, opacity, sentColors.y), alpha * opacity, sentColors.x);
    return vec4(color * factor, alpha * opacity);
}

// How much of a pixel lies in the quad less a margin, whose corners are round.
float within(vec2 fromMiddle, float margin, float radius)
{
    vec2 beyond = fromMiddle - (0.5 * frameSize - margin - radius);
    float distance = length(max(beyond, 0.0)) + min(max(beyond.x, beyond.y), 0.0) - radius;
    return clamp(0.5 - distance * pixelsAUnit, 0.0, 1.0);
}

// The border shows as far as the picture does not.
vec4 bordered(vec4 color, float inner)
{
    float alpha = mix(inputColor.a, color.a, inner);
    return vec4(mix(inputColor.rgb, color.rgb, inner * color.a / max(alpha, 0.000004)), alpha);
}

void main()
{
    vec4 color = texture2D(videoFrame, filteredPlace(textureCoordinate));
    vec4 shown = vec4(filteredColor(straightColor(color)), color.a) * glColor;
    vec2 fromMiddle = abs(place - 0.5) * frameSize;
    float shorter = min(frameSize.x, frameSize.y), radius = cornerRadius * shorter;
    if (framew > 0.0) shown = bordered(shown, within(fromMiddle, framew * shorter, max(radius - framew * shorter, 0.0)));
    // Straight edges are smoothed elsewhere.
    bool isCorner = all(greaterThan(fromMiddle, 0.5 * frameSize - radius));
    if (radius > 0.0 && isCorner) shown.a *= within(fromMiddle, 0.0, radius);
    gl_FragColor = sent(shown.rgb, shown.a, aplae);
}
