#version 120
// A 3D lookup table from a file, at texture unit 1 (inputImageTextureLut):
// N slices of N x N side by side in an N*N x N picture (ufmWidth x
// ufmHeight), blue choosing the slice, red the column and green the row.
// Red and green are interpolated by the texture unit, blue between two
// slices here: trilinear in all. ufmIntensity mixes the result with the
// picture; while ufmlutPathError is 1 (no table loaded) the picture passes.
#include "filter_common.glsl"

uniform sampler2D inputImageTextureLut;
uniform float ufmIntensity;
uniform float ufmlutPathError;
uniform float ufmWidth;
uniform float ufmHeight;

vec3 lookUp(vec3 c)
{
    float n = ufmHeight;
    vec3 s = clamp(c, 0.0, 1.0) * (n - 1.0);
    float slice0 = floor(s.b);
    float slice1 = min(slice0 + 1.0, n - 1.0);
    float f = s.b - slice0;
    float v = (s.g + 0.5) / n;
    vec3 a = texture2D(inputImageTextureLut, vec2((slice0 * n + s.r + 0.5) / ufmWidth, v)).rgb;
    vec3 b = texture2D(inputImageTextureLut, vec2((slice1 * n + s.r + 0.5) / ufmWidth, v)).rgb;
    return mix(a, b, f);
}

void main()
{
    vec4 colour = picture(vUv);
    if (ufmlutPathError > 0.5 || ufmHeight < 2.0 || ufmWidth < ufmHeight * ufmHeight - 0.5) {
        gl_FragColor = colour;
        return;
    }
    vec3 mapped = lookUp(colour.rgb);
    gl_FragColor = vec4(mix(colour.rgb, mapped, clamp(ufmIntensity, 0.0, 1.0)), colour.a);
}
