// A textured mesh with normals: hands place and normal, of length 1, to the lights, in the world's coordinates.
attribute vec4 position;
attribute vec4 inputTextureCoordinate;
attribute vec3 normal;

uniform mat4 u_mvpMatrix;
uniform mat4 u_textureMatrix;
uniform mat4 u_modelMatrix;
uniform mat4 u_normalMatrix;

varying vec2 textureCoordinate;
varying vec3 worldPosition;
varying vec3 worldNormal;

void main()
{
    gl_Position = u_mvpMatrix * position;
    textureCoordinate = (u_textureMatrix * inputTextureCoordinate).xy;
    worldPosition = (u_modelMatrix * position).xyz;
    worldNormal = normalize((u_normalMatrix * vec4(normal, 0.0)).xyz);
}
