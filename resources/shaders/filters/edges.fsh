// Outlines.
uniform float width;
uniform float gain;
uniform vec4 lineColor;
uniform vec4 groundColor;

float level(vec2 at)
{
    return grey(texel(at).rgb);
}

vec4 filtered(vec4 color, vec2 at)
{
    float reach = max(1.0, floor(width * min(pictureSize.x, pictureSize.y) + 0.5));
    float a = level(at + vec2(-reach, -reach)), b = level(at + vec2(0.0, -reach)), d = level(at + vec2(reach, -reach));
    float e = level(at + vec2(-reach, 0.0)), f = level(at + vec2(reach, 0.0));
    float g = level(at + vec2(-reach, reach)), h = level(at + vec2(0.0, reach)), i = level(at + vec2(reach, reach));
    float x = d + i + 2.0 * f - (a + g + 2.0 * e), y = g + i + 2.0 * h - (a + d + 2.0 * b);
    float size = sqrt(x * x + y * y) * 0.25 * gain;
    vec3 behind = mix(color.rgb, groundColor.rgb, groundColor.a);
    return vec4(mix(behind, lineColor.rgb, min(size, 1.0) * lineColor.a), color.a);
}
