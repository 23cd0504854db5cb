#version 120
// Two pictures mixed by progress: 0 shows A, 1 shows B.
uniform sampler2D imageA;
uniform sampler2D imageB;
uniform float progress;

varying vec2 oUv0;

void main()
{
    gl_FragColor = mix(texture2D(imageA, oUv0), texture2D(imageB, oUv0), progress);
}
