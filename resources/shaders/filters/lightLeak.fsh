// Light that came into the camera from the side.
uniform float phase;
uniform float size;
uniform vec4 warmColor;
uniform vec4 glowColor;

// A glow round a place (parts of the sides) that wanders up and down.
float spot(vec2 at, vec2 place, float turn, float reach)
{
    float turns = phase + turn;
    vec2 away = at / pictureSize - (place + vec2(0.08 * cosineOfTurns(turns), 0.18 * sineOfTurns(turns)));
    float left = max(1.0 - (away.x * away.x + 0.5 * away.y * away.y) / (reach * reach), 0.0);
    return left * left;
}

// Lights add up as on a screen: what is bright stays bright.
vec3 lit(vec3 color, vec3 light)
{
    return 1.0 - (1.0 - color) * (1.0 - light);
}

vec4 filtered(vec4 color, vec2 at)
{
    vec3 first = lit(color.rgb, warmColor.rgb * (warmColor.a * spot(at, vec2(0.02, 0.3), 0.0, size)));
    return vec4(lit(first, glowColor.rgb * (glowColor.a * spot(at, vec2(1.0, 0.75), 0.4, 0.8 * size))), color.a);
}
