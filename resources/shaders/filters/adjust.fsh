// Brightness, contrast, saturation.
uniform float brightness;
uniform float contrast;
uniform float saturation;

vec4 filtered(vec4 color, vec2 at)
{
    vec3 lit = (color.rgb - 0.5) * (1.0 + contrast + max(contrast, 0.0)) + (0.5 + 0.5 * brightness);
    return vec4(mix(vec3(grey(lit)), lit, 1.0 + saturation + max(saturation, 0.0)), color.a);
}
