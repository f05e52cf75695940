attribute vec4 position;
attribute vec4 inputTextureCoordinate;
uniform mat4 u_mvpMatrix;
uniform mat4 u_textureMatrix;
varying vec2 place;

void main() {
    gl_Position = u_mvpMatrix * position;
    place = (u_textureMatrix * inputTextureCoordinate).xy;
}
