// A textured quad that shows only where its mask is bright: white shows, black and transparent hide. The mask stays
// where the quad is; the texture matrix moves the picture behind it.
#ifdef GL_FRAGMENT_PRECISION_HIGH
precision highp float;
precision highp sampler2D;
#else
precision mediump float;
#endif

uniform sampler2D videoFrame;
uniform sampler2D frameTexture;
uniform float aplae;
uniform bool isPreMultiplication;
uniform bool isMaskPreMultiplication;
// What the blend function wants: x, colours that alpha and opacity multiply; y, colours that opacity alone does.
uniform vec2 sentColors;

varying vec2 textureCoordinate;
varying vec2 maskCoordinate;

// Pictures, texts and render targets hold colours multiplied by their alpha; blending wants them straight.
// Where alpha is 0 the colour is 0 too, and stays so.
vec3 straightColor(vec4 color)
{
    return isPreMultiplication ? color.rgb / max(color.a, 1.0 / 255.0) : color.rgb;
}

vec4 sent(vec3 color, float alpha, float opacity)
{
    float factor = mix(mix(1.0, opacity, sentColors.y), alpha * opacity, sentColors.x);
    return vec4(color * factor, alpha * opacity);
}

void main()
{
    vec4 color = texture2D(videoFrame, textureCoordinate);
    vec4 mask = texture2D(frameTexture, maskCoordinate);
    float brightness = dot(mask.rgb, vec3(0.299, 0.587, 0.114));
    float shown = isMaskPreMultiplication ? brightness : brightness * mask.a;
    gl_FragColor = sent(straightColor(color), color.a, shown * aplae);
}
