// Edges and fine lines stand out.
uniform float amount;

vec4 filtered(vec4 color, vec2 at)
{
    vec3 around = straight(smoothAside(asidePlace(at))).rgb;
    return vec4(color.rgb + (color.rgb - around) * amount, color.a);
}
