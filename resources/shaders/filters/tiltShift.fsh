// Sharp in a band alone.
uniform float place;
uniform float band;
uniform float softness;

vec4 filtered(vec4 color, vec2 at)
{
    float part = soft(abs(at.y / pictureSize.y - place), 0.5 * band, softness);
    return mix(color, straight(smoothAside(asidePlace(at))), part);
}
