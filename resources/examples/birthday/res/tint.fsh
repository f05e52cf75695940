precision mediump float;
varying vec2 place;
uniform sampler2D videoFrame;
uniform int isPreMultiplication;
uniform float aplae;

void main() {
    vec4 color = texture2D(videoFrame, place);
    if (isPreMultiplication == 1 && color.a > 0.0) color.rgb /= color.a;
    float grey = dot(color.rgb, vec3(0.3, 0.6, 0.1));
    gl_FragColor = vec4(mix(color.rgb, vec3(grey, grey * 0.8, grey * 0.5), aplae), color.a);
}
