// A textured quad whose opacity changes from one place to another. "startAlpha" and "endAlpha" are each a place
// along the axis (0 to 1) and the opacity there; before and behind the two places the opacity stays as it is at
// them. "interpolation": 0 from left to right, 1 from top to bottom, 2 and 3 the same with a soft start and end.
#ifdef GL_FRAGMENT_PRECISION_HIGH
precision highp float;
precision highp sampler2D;
#else
precision mediump float;
#endif

uniform sampler2D videoFrame;
uniform vec2 startAlpha;
uniform vec2 endAlpha;
uniform int interpolation;
uniform bool isPreMultiplication;
// What the blend function wants: x, colours that alpha and opacity multiply; y, colours that opacity alone does.
uniform vec2 sentColors;

varying vec2 textureCoordinate;
varying vec2 place;

// Pictures, texts and render targets hold colours multiplied by their alpha; blending wants them straight.
// Where alpha is 0 the colour is 0 too, and stays so.
vec3 straightColor(vec4 color)
{
    return isPreMultiplication ? color.rgb / max(color.a, 1.0 / 255.0) : color.rgb;
}

float progressBetween(float start, float end, float along)
{
    float span = end - start;
    // Both at one place: a hard edge there.
    if (abs(span) < 0.0001) return along < start ? 0.0 : 1.0;
    return clamp((along - start) / span, 0.0, 1.0);
}

vec4 sent(vec3 color, float alpha, float opacity)
{
    float factor = mix(mix(1.0, opacity, sentColors.y), alpha * opacity, sentColors.x);
    return vec4(color * factor, alpha * opacity);
}

void main()
{
    bool vertical = interpolation == 1 || interpolation == 3;
    float progress = progressBetween(startAlpha.x, endAlpha.x, vertical ? place.y : place.x);
    if (interpolation >= 2) progress = smoothstep(0.0, 1.0, progress);
    vec4 color = texture2D(videoFrame, textureCoordinate);
    float opacity = clamp(mix(startAlpha.y, endAlpha.y, progress), 0.0, 1.0);
    gl_FragColor = sent(straightColor(color), color.a, opacity);
}
