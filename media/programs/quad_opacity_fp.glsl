#version 120
// The picture with its alpha scaled by ufmOpacity (0 transparent, 1 as is).
uniform sampler2D inputImageTexture;
uniform float ufmOpacity;

varying vec2 oUv0;

void main()
{
    vec4 colour = texture2D(inputImageTexture, oUv0);
    gl_FragColor = vec4(colour.rgb, colour.a * ufmOpacity);
}
