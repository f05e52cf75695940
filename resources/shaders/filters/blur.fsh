// Everything out of focus.
vec4 filtered(vec4 color, vec2 at)
{
    return straight(smoothAside(asidePlace(at)));
}
