#ifdef GL_FRAGMENT_PRECISION_HIGH
precision highp float;
#else
precision mediump float;
#endif

uniform sampler2D videoFrame;
uniform float aplae;
varying vec2 textureCoordinate;

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

void main()
{
    vec4 colour = texture2D(videoFrame, textureCoordinate);
    float grain = cloud(textureCoordinate * vec2(4.0, 7.0)) * 0.75 + 0.25 * (1.0 - textureCoordinate.y);
    float front = aplae * 1.3 - 0.15;
    float edge = smoothstep(front - 0.012, front + 0.012, grain);
    float glow = 1.0 - smoothstep(0.0, 0.06, grain - front);
    vec3 warm = mix(colour.rgb, vec3(1.0, 0.66, 0.3), 0.9 * glow * glow);
    gl_FragColor = vec4(warm + vec3(0.3) * pow(glow, 8.0), edge);
}
