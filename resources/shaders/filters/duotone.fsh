// Brightness from one colour to another.
uniform vec4 darkColor;
uniform vec4 lightColor;

vec4 filtered(vec4 color, vec2 at)
{
    return vec4(mix(darkColor.rgb, lightColor.rgb, grey(color.rgb)), color.a);
}
