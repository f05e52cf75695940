// As texturedQuad.vsh, and carries over the place on the quad too: (0, 0) is its top left corner, (1, 1) its
// bottom right one, however the texture matrix moves the picture.
attribute vec4 position;
attribute vec4 inputTextureCoordinate;

uniform mat4 u_mvpMatrix;
uniform mat4 u_textureMatrix;

varying vec2 textureCoordinate;
varying vec2 place;

void main()
{
    gl_Position = u_mvpMatrix * position;
    textureCoordinate = (u_textureMatrix * inputTextureCoordinate).xy;
    place = inputTextureCoordinate.xy;
}
