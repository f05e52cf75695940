// What is bright shines over its edges.
uniform float amount;

vec4 filtered(vec4 color, vec2 at)
{
    vec3 around = straight(smoothAside(asidePlace(at))).rgb;
    return vec4(1.0 - (1.0 - color.rgb) * (1.0 - around * (grey(around) * amount)), color.a);
}
