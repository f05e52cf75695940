// Colours by a table, which lies beside: one square of red and green for each blue.
vec3 slice(vec2 at, float number)
{
    return smoothAside(at + vec2(number * asideSize.y, 0.0)).rgb;
}

vec4 filtered(vec4 color, vec2 at)
{
    vec3 place = color.rgb * (asideSize.y - 1.0);
    float nearer = min(floor(place.b), asideSize.y - 2.0);
    vec2 inSquare = place.rg + 0.5;
    return vec4(mix(slice(inSquare, nearer), slice(inSquare, nearer + 1.0), place.b - nearer), color.a);
}
