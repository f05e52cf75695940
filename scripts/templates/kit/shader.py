"""Shader programs that a template brings along: a description file and its two sources."""

from . import plist

VERTEX = """attribute vec4 position;
attribute vec4 inputTextureCoordinate;
uniform mat4 u_mvpMatrix;
uniform mat4 u_textureMatrix;
varying vec2 textureCoordinate;

void main()
{
    gl_Position = u_mvpMatrix * position;
    textureCoordinate = (u_textureMatrix * inputTextureCoordinate).xy;
}
"""

NOISE = """
float hash(vec2 p)
{
    return fract(sin(dot(p, vec2(127.1, 311.7))) * 43758.5453);
}

float noise(vec2 p)
{
    vec2 cell = floor(p);
    vec2 f = fract(p);
    vec2 u = f * f * (3.0 - 2.0 * f);
    float low = mix(hash(cell), hash(cell + vec2(1.0, 0.0)), u.x);
    float high = mix(hash(cell + vec2(0.0, 1.0)), hash(cell + vec2(1.0, 1.0)), u.x);
    return mix(low, high, u.y);
}

float cloud(vec2 p)
{
    return 0.53 * noise(p) + 0.27 * noise(p * 2.1 + 7.3) + 0.13 * noise(p * 4.3 + 1.9) + 0.07 * noise(p * 8.7);
}
"""

HEAD = """#ifdef GL_FRAGMENT_PRECISION_HIGH
precision highp float;
#else
precision mediump float;
#endif

uniform sampler2D videoFrame;
uniform float aplae;
varying vec2 textureCoordinate;
"""


def write(template, name, body):
    """`body` is the rest of the fragment shader: its main, and what that needs."""
    template.file(f"shaders/{name}.vsh").write_text(VERTEX)
    template.file(f"shaders/{name}.fsh").write_text(HEAD + body)
    plist.write(template.file(f"shaders/{name}.plist"), {
        "Files": [f"{name}.vsh", f"{name}.fsh"],
        "Attributes": ["position", "inputTextureCoordinate"],
        "Uniforms": ["u_mvpMatrix", "u_textureMatrix", "videoFrame", "aplae"]})


def path(name):
    return f"$(currentScenePlistROOT)/shaders/{name}.plist"
