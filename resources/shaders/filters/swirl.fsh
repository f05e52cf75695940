// The picture stirred round a place.
uniform float turns;
uniform float radius;
uniform float centerX;
uniform float centerY;

vec2 moved(vec2 at)
{
    vec2 center = vec2(centerX, centerY) * pictureSize, away = at - center;
    float near = max(1.0 - sqrt(dot(away, away)) / (radius * min(pictureSize.x, pictureSize.y)), 0.0);
    float turn = near * near * turns * strength;
    float cosine = cosineOfTurns(turn), sine = sineOfTurns(turn);
    return vec2(away.x * cosine - away.y * sine, away.x * sine + away.y * cosine) + center;
}
