// A pencil's drawing on paper.
uniform float darkness;
uniform vec4 paperColor;
uniform vec4 pencilColor;

const float least = 0.1; // keeps what is dark all over from being all pencil

vec4 filtered(vec4 color, vec2 at)
{
    float around = grey(straight(smoothAside(asidePlace(at))).rgb), level = grey(color.rgb);
    float strokes = max(1.0 - (level + least) / (around + least), 0.0) * darkness;
    // A light wash of the shadows.
    float wash = soft(1.0 - level, 0.45, 0.6) * 0.35;
    return vec4(mix(paperColor.rgb, pencilColor.rgb, clamp(strokes + wash, 0.0, 1.0)), color.a);
}
