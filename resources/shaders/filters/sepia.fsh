// Brown, as old prints are.
vec4 filtered(vec4 color, vec2 at)
{
    return vec4(grey(color.rgb) * vec3(1.2, 1.0, 0.8), color.a);
}
