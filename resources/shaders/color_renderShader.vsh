// A shape of one colour.
attribute vec4 position;

uniform mat4 u_mvpMatrix;

void main()
{
    gl_Position = u_mvpMatrix * position;
}
