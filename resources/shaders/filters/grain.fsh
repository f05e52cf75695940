// The grain of film; the noise lies beside and repeats itself.
uniform float amount;

float noise(vec2 pixel)
{
    return texture2D(asidePicture, (pixel - floor((pixel + 0.5) / asideSize) * asideSize + 0.5) / asideSize).g;
}

vec4 filtered(vec4 color, vec2 at)
{
    vec2 place = asidePlace(at) - 0.5, upper = floor(place), part = place - upper;
    float above = mix(noise(upper), noise(upper + vec2(1.0, 0.0)), part.x);
    float below = mix(noise(upper + vec2(0.0, 1.0)), noise(upper + 1.0), part.x);
    float level = clamp(grey(color.rgb), 0.0, 1.0);
    // Film shows it most between black and white.
    float shown = level * (1.0 - level) * 2.8 + 0.3;
    return vec4(color.rgb + (mix(above, below, part.y) - 0.5) * shown * amount, color.a);
}
