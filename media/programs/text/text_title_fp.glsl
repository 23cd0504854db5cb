#version 120
// The title video of a text clip through its mask video: colour from the
// picture in unit 0, coverage from the mask in unit 1. Masks are grey
// videos, so their brightness is the coverage; a coloured mask counts by
// its luma, as the eye sees it.
uniform sampler2D titleTexture;
uniform sampler2D titleMaskTexture;

varying vec2 oUv0;

void main()
{
    vec3 colour = texture2D(titleTexture, oUv0).rgb;
    float coverage = dot(texture2D(titleMaskTexture, oUv0).rgb, vec3(0.299, 0.587, 0.114));
    gl_FragColor = vec4(colour, coverage);
}
