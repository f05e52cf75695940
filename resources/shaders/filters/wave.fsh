// Rows swing as seen through water.
uniform float height;
uniform float waves;
uniform float phase;

vec2 moved(vec2 at)
{
    float reach = height * min(pictureSize.x, pictureSize.y) * strength;
    return vec2(at.x + sineOfTurns(at.y / pictureSize.y * waves - phase) * reach, at.y);
}
