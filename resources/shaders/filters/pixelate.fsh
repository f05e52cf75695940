// Large squares of one colour.
uniform float size;

vec4 filtered(vec4 color, vec2 at)
{
    float tile = max(1.0, floor(size * min(pictureSize.x, pictureSize.y) + 0.5));
    return straight(smoothAside(asidePlace((floor(at / tile) + 0.5) * tile)));
}
