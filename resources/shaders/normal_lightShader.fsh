// A mesh, textured or of one colour, lit by up to eight lights. Ambient and diffuse light colour the texture, specular
// light lies over it. A light's colours are its material colours.
#ifdef GL_FRAGMENT_PRECISION_HIGH
precision highp float;
precision highp sampler2D;
#else
precision mediump float;
#endif

const int maxLights = 8;

struct LightSource
{
    int useLight;  // 1 point, 2 directional, 3 spot
    vec3 lightPosition;  // of a directional light: the direction towards it
    vec3 ambientMaterial;
    vec3 diffuseMaterial;
    vec3 specularMaterial;
    float shininess;
    float spotLightExponent;
    float spotLightCutOffAngle;  // radians, from the middle of the cone to its edge
    vec3 spotLightDirection;  // away from the light
};

uniform sampler2D videoFrame;
uniform bool isPreMultiplication;
uniform float fade;  // what is taken from the alpha: 0 nothing, 1 all
uniform bool isOneColor;  // SourceColor instead of the texture
uniform vec4 SourceColor;  // not multiplied by alpha
// What the blend function wants: x, colours that alpha and opacity multiply; y, colours that opacity alone does.
uniform vec2 sentColors;
uniform int lightEnable;
uniform int lightSourceNumber;
uniform LightSource lightSourceArray[maxLights];
uniform vec3 u_eyePosition;

varying vec2 textureCoordinate;
varying vec3 worldPosition;
varying vec3 worldNormal;

// Pictures, texts and render targets hold colours multiplied by their alpha; blending wants them straight.
// Where alpha is 0 the colour is 0 too, and stays so.
vec3 straightColor(vec4 color)
{
    return isPreMultiplication ? color.rgb / max(color.a, 1.0 / 255.0) : color.rgb;
}

// Of length 1; "otherwise" for one of length 0, which has no direction.
vec3 direction(vec3 vector, vec3 otherwise)
{
    float size = length(vector);
    return size > 0.0 ? vector / size : otherwise;
}

// How much of a spot light goes into the direction away from the light; 1 for the other kinds. A spot light without a
// direction shines straight ahead, into the picture.
float spotFactor(LightSource light, vec3 toLight)
{
    if (light.useLight != 3) return 1.0;
    float inCone = dot(-toLight, direction(light.spotLightDirection, vec3(0.0, 0.0, -1.0)));
    if (inCone < cos(light.spotLightCutOffAngle)) return 0.0;
    return pow(max(inCone, 0.0001), light.spotLightExponent);
}

void addLight(LightSource light, vec3 normal, vec3 toEye, inout vec3 surface, inout vec3 gloss)
{
    vec3 toLight = direction(light.useLight == 2 ? light.lightPosition : light.lightPosition - worldPosition, normal);
    float facing = max(dot(normal, toLight), 0.0);
    float strength = spotFactor(light, toLight);
    surface += light.ambientMaterial + strength * facing * light.diffuseMaterial;
    if (facing <= 0.0) return;
    float mirrored = max(dot(reflect(-toLight, normal), toEye), 0.0001);
    gloss += strength * pow(mirrored, light.shininess) * light.specularMaterial;
}

vec4 sent(vec3 color, float alpha)
{
    return vec4(color * mix(1.0, alpha, sentColors.x), alpha);
}

void main()
{
    vec4 color = isOneColor ? SourceColor : texture2D(videoFrame, textureCoordinate);
    vec3 texel = straightColor(color);
    color.a *= 1.0 - fade;
    if (lightEnable == 0) {
        gl_FragColor = sent(texel, color.a);
        return;
    }
    vec3 normal = normalize(gl_FrontFacing ? worldNormal : -worldNormal);
    vec3 toEye = normalize(u_eyePosition - worldPosition);
    vec3 surface = vec3(0.0);
    vec3 gloss = vec3(0.0);
    for (int i = 0; i < maxLights; ++i) {
        if (i >= lightSourceNumber) break;
        addLight(lightSourceArray[i], normal, toEye, surface, gloss);
    }
    gl_FragColor = sent(clamp(texel * surface + gloss, 0.0, 1.0), color.a);
}
