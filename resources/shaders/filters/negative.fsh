// Every colour by its opposite.
vec4 filtered(vec4 color, vec2 at)
{
    return vec4(1.0 - color.rgb, color.a);
}
