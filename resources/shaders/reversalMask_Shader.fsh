// A video whose opacity comes from a second video: the brightness of the mask frame is the alpha of the master
// frame.
#ifdef GL_FRAGMENT_PRECISION_HIGH
precision highp float;
precision highp sampler2D;
#else
precision mediump float;
#endif

uniform sampler2D videoFrame;
uniform sampler2D frameTexture;
// What the blend function wants: x, colours that alpha and opacity multiply; y, colours that opacity alone does.
uniform vec2 sentColors;

varying vec2 textureCoordinate;

vec4 sent(vec3 color, float alpha, float opacity)
{
    float factor = mix(mix(1.0, opacity, sentColors.y), alpha * opacity, sentColors.x);
    return vec4(color * factor, alpha * opacity);
}

void main()
{
    vec4 color = texture2D(videoFrame, textureCoordinate);
    float mask = dot(texture2D(frameTexture, textureCoordinate).rgb, vec3(0.299, 0.587, 0.114));
    gl_FragColor = sent(color.rgb, color.a, mask);
}
