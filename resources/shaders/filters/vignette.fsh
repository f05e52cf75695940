// Corners in the shade.
uniform float start;
uniform float softness;
uniform vec4 shadeColor;

vec4 filtered(vec4 color, vec2 at)
{
    vec2 away = at * 2.0 / pictureSize - 1.0;
    float distance = sqrt(dot(away, away) * 0.5);
    return vec4(mix(color.rgb, shadeColor.rgb, soft(distance, start, softness) * shadeColor.a), color.a);
}
