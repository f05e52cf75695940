// Few steps of colour.
uniform float levels;

vec4 filtered(vec4 color, vec2 at)
{
    float steps = floor(levels + 0.5) - 1.0;
    return vec4(floor(color.rgb * steps + 0.5) / steps, color.a);
}
