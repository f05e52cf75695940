// A mesh, textured or of one colour, lit by up to eight lights. Ambient and diffuse light colour the texture, specular
// light lies over it. A light's colours are its material colours.
//
// The program puts one definition before this text, so that it fits the lights of a draw:
//   UNLIT    there are none
//   LIGHTS   a LIGHT(index, kind, has specular light) for each of them; normals then face the viewer already
// Without it the uniforms tell number and kinds. It may add
//   SMOOTH            normals change within triangles, so their length does too
//   EMISSION_PICTURE  the mesh shines by itself, by a picture
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
    float spotLightCutOffCosine;  // the angle's, set beside it
    vec3 spotLightDirection;  // away from the light
};

uniform sampler2D videoFrame;
uniform bool isPreMultiplication;
uniform float fade;  // what is taken from the alpha: 0 nothing, 1 all
uniform vec4 shade;  // what is taken from the texture's colours and alpha: 0 nothing, 1 all
uniform vec3 emission;  // light of its own
#ifdef EMISSION_PICTURE
uniform sampler2D emissionPicture;  // multiplies it
#endif
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

#ifndef UNLIT

// Of length 1; "otherwise" for one of length 0, which has no direction.
vec3 direction(vec3 vector, vec3 otherwise)
{
    float squared = dot(vector, vector);
    return squared > 0.0 ? vector * inversesqrt(squared) : otherwise;
}

float edgeOfCone(LightSource light)
{
#ifdef LIGHTS
    return light.spotLightCutOffCosine;
#else
    return cos(light.spotLightCutOffAngle);
#endif
}

// How much of a spot light goes into the direction away from the light. One without a direction shines straight ahead,
// into the picture.
float spotFactor(LightSource light, vec3 toLight)
{
    float inCone = dot(-toLight, direction(light.spotLightDirection, vec3(0.0, 0.0, -1.0)));
    float isInside = inCone < edgeOfCone(light) ? 0.0 : 1.0;
    return isInside * pow(max(inCone, 0.0001), light.spotLightExponent);
}

// Factors of 0 instead of branches: software runs both sides of a branch, and loses time in between.
void addLight(LightSource light, int kind, bool hasGloss, vec3 normal, vec3 toEye, inout vec3 surface, inout vec3 gloss)
{
    vec3 toLight = direction(kind == 2 ? light.lightPosition : light.lightPosition - worldPosition, normal);
    float facing = dot(normal, toLight);
    float strength = kind == 3 ? spotFactor(light, toLight) : 1.0;
    surface += light.ambientMaterial + strength * max(facing, 0.0) * light.diffuseMaterial;
    if (!hasGloss) return;
    float mirrored = max(2.0 * facing * dot(normal, toEye) - dot(toLight, toEye), 0.0001);
    float isFacing = facing > 0.0 ? 1.0 : 0.0;
    gloss += strength * isFacing * pow(mirrored, light.shininess) * light.specularMaterial;
}

vec3 lit(vec3 texel)
{
    vec3 toEye = normalize(u_eyePosition - worldPosition);
    vec3 surface = vec3(0.0);
    vec3 gloss = vec3(0.0);
#ifdef LIGHTS
#ifdef SMOOTH
    vec3 normal = direction(worldNormal, worldNormal);
#else
    vec3 normal = worldNormal;
#endif
#define LIGHT(index, kind, hasGloss) addLight(lightSourceArray[index], kind, hasGloss, normal, toEye, surface, gloss);
    LIGHTS
#else
    if (lightEnable == 0) return texel;
    vec3 normal = normalize(gl_FrontFacing ? worldNormal : -worldNormal);
    for (int i = 0; i < maxLights; ++i) {
        if (i >= lightSourceNumber) break;
        addLight(lightSourceArray[i], lightSourceArray[i].useLight, true, normal, toEye, surface, gloss);
    }
#endif
    return texel * surface + gloss;
}

#endif

vec4 sent(vec3 color, float alpha)
{
    return vec4(color * mix(1.0, alpha, sentColors.x) * mix(1.0, 1.0 - fade, sentColors.y), alpha);
}

void main()
{
    vec4 color = isOneColor ? SourceColor : texture2D(videoFrame, textureCoordinate);
    vec3 texel = straightColor(color) * (1.0 - shade.rgb);
    color.a *= (1.0 - shade.a) * (1.0 - fade);
#ifndef UNLIT
    texel = lit(texel);
#endif
    vec3 own = emission;
#ifdef EMISSION_PICTURE
    own *= texture2D(emissionPicture, textureCoordinate).rgb;
#endif
    gl_FragColor = sent(clamp(texel + own, 0.0, 1.0), color.a);
}
