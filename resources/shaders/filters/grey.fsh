// Brightness alone.
vec4 filtered(vec4 color, vec2 at)
{
    return vec4(vec3(grey(color.rgb)), color.a);
}
