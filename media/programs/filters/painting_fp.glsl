#version 120
// Oil painting: a Kuwahara filter. Of the four square windows that meet at
// a pixel, the one with the least variance gives its mean colour, so that
// areas flatten into strokes while edges stay sharp. The windows reach
// ufmRadius pixels; 6 x 6 samples each, spread out for larger radii.
// ufmRadius 0 leaves the picture as it is.
#include "filter_common.glsl"

uniform vec4 texelSize;
uniform float ufmRadius;

void main()
{
    vec4 colour = picture(vUv);
    float radius = clamp(ufmRadius, 0.0, 40.0);
    float stride = radius / 5.0;
    vec3 mean[4];
    vec3 square[4];
    for (int k = 0; k < 4; ++k) {
        mean[k] = vec3(0.0);
        square[k] = vec3(0.0);
    }
    for (int j = 0; j <= 5; ++j) {
        for (int i = 0; i <= 5; ++i) {
            vec2 d = vec2(float(i), float(j)) * stride * texelSize.xy;
            vec3 a = picture(vUv + vec2(-d.x, -d.y)).rgb;
            vec3 b = picture(vUv + vec2(d.x, -d.y)).rgb;
            vec3 c = picture(vUv + vec2(-d.x, d.y)).rgb;
            vec3 e = picture(vUv + vec2(d.x, d.y)).rgb;
            mean[0] += a; square[0] += a * a;
            mean[1] += b; square[1] += b * b;
            mean[2] += c; square[2] += c * c;
            mean[3] += e; square[3] += e * e;
        }
    }
    float best = 1e9;
    vec3 result = colour.rgb;
    for (int k = 0; k < 4; ++k) {
        vec3 m = mean[k] / 36.0;
        vec3 v = abs(square[k] / 36.0 - m * m);
        float variance = v.r + v.g + v.b;
        if (variance < best) {
            best = variance;
            result = m;
        }
    }
    gl_FragColor = vec4(clamp(result, 0.0, 1.0), colour.a);
}
