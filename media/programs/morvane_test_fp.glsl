#version 120
// The two pictures of the compositor transition, A faded into B by
// progress. vUv is (0, 0) at the top left.
varying vec2 vUv;

uniform sampler2D inputImageTexture;
uniform sampler2D inputImageTexture2;
uniform float progress;

void main()
{
    gl_FragColor = mix(texture2D(inputImageTexture, vUv), texture2D(inputImageTexture2, vUv), progress);
}
