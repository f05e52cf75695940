// A quad with a mask. "inputTextureCoordinate" is the place on the quad, (0, 0) its top left corner, (1, 1) its bottom
// right one; a matrix each leads from there into the picture and into the mask.
attribute vec4 position;
attribute vec4 inputTextureCoordinate;

uniform mat4 u_mvpMatrix;
uniform mat4 u_textureMatrix;
uniform mat4 maskMatrix;

varying vec2 textureCoordinate;
varying vec2 maskCoordinate;

void main()
{
    gl_Position = u_mvpMatrix * position;
    textureCoordinate = (u_textureMatrix * inputTextureCoordinate).xy;
    maskCoordinate = (maskMatrix * inputTextureCoordinate).xy;
}
