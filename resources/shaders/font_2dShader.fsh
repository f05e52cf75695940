// Letters from an atlas, whose alpha is their shape and multiplies its colours: white for letters that take the
// text's colour, emoji have their own.
#ifdef GL_FRAGMENT_PRECISION_HIGH
precision highp float;
#else
precision mediump float;
#endif

uniform sampler2D videoFrame;
uniform vec4 SourceColor;  // not multiplied by alpha
// What the blend function wants: x, colours that alpha and opacity multiply; y, colours that opacity alone does.
uniform vec2 sentColors;

varying vec2 textureCoordinate;

vec4 sent(vec3 color, float alpha, float opacity)
{
    float factor = mix(mix(1.0, opacity, sentColors.y), alpha * opacity, sentColors.x);
    return vec4(color * factor, alpha * opacity);
}

void main()
{
    vec4 shape = texture2D(videoFrame, textureCoordinate);
    vec3 letter = shape.rgb / max(shape.a, 1.0 / 255.0);
    gl_FragColor = sent(SourceColor.rgb * letter, 1.0, SourceColor.a * shape.a);
}
