// Red and blue pulled apart.
uniform float reach;
uniform float turn;

vec4 filtered(vec4 color, vec2 at)
{
    vec2 shift = vec2(cosineOfTurns(turn), sineOfTurns(turn)) * (reach * min(pictureSize.x, pictureSize.y));
    return vec4(straight(smoothTexel(at - shift)).r, color.g, straight(smoothTexel(at + shift)).b, color.a);
}
