// Warmer or cooler light.
uniform float warmth;
uniform float tint;

vec4 filtered(vec4 color, vec2 at)
{
    vec3 light = vec3(1.0 + 0.28 * warmth + 0.1 * tint, 1.0 + 0.04 * warmth - 0.18 * tint, 1.0 - 0.32 * warmth + 0.1 * tint);
    return vec4(color.rgb * light, color.a);
}
