// A textured quad with an opacity, an image filter and a border.
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
uniform float framew;  // width of the border, as a part of the picture's shorter side
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

void main()
{
    vec4 color = texture2D(videoFrame, filteredPlace(textureCoordinate));
    vec4 shown = vec4(filteredColor(straightColor(color)), color.a) * glColor;
    vec2 fromEdge = min(place, 1.0 - place) * textureSize / min(textureSize.x, textureSize.y);
    if (min(fromEdge.x, fromEdge.y) < framew) shown = inputColor;
    gl_FragColor = sent(shown.rgb, shown.a, aplae);
}
