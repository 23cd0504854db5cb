#version 120
// Edge pictures, one define per filter, all from the grey level of the 3x3
// neighbourhood:
//   SOBEL           white edges on black, ufmEdgeStrength times the gradient
//   PREWITT         the picture's own colours where its edges are, black
//                   elsewhere; ufmEdgeStrength 10 is a plain gradient
//   THRESHOLD_EDGE  white where the Sobel gradient passes ufmThreshold
//   SKETCH          dark pencil strokes on white paper
//   CARTOON         colours in ufmQuantizationLevels steps, black outlines
//                   where the gradient passes ufmThreshold
#include "filter_common.glsl"

uniform vec4 texelSize;
uniform float ufmEdgeStrength;
uniform float ufmThreshold;
uniform float ufmQuantizationLevels;

float greyAt(vec2 offset)
{
    return luma(picture(vUv + offset * texelSize.xy).rgb);
}

void main()
{
    vec4 colour = picture(vUv);
    float tl = greyAt(vec2(-1.0, -1.0));
    float t = greyAt(vec2(0.0, -1.0));
    float tr = greyAt(vec2(1.0, -1.0));
    float l = greyAt(vec2(-1.0, 0.0));
    float r = greyAt(vec2(1.0, 0.0));
    float bl = greyAt(vec2(-1.0, 1.0));
    float b = greyAt(vec2(0.0, 1.0));
    float br = greyAt(vec2(1.0, 1.0));

#if defined(PREWITT)
    float gx = (tr + r + br) - (tl + l + bl);
    float gy = (bl + b + br) - (tl + t + tr);
#else
    float gx = (tr + 2.0 * r + br) - (tl + 2.0 * l + bl);
    float gy = (bl + 2.0 * b + br) - (tl + 2.0 * t + tr);
#endif
    float gradient = length(vec2(gx, gy));
    vec3 c;

#if defined(SOBEL)
    c = vec3(gradient * ufmEdgeStrength);
#elif defined(PREWITT)
    c = colour.rgb * clamp(gradient * ufmEdgeStrength * 0.1, 0.0, 1.0);
#elif defined(THRESHOLD_EDGE)
    c = vec3(step(ufmThreshold, gradient * ufmEdgeStrength));
#elif defined(SKETCH)
    c = vec3(1.0 - gradient * ufmEdgeStrength);
#elif defined(CARTOON)
    float levels = max(ufmQuantizationLevels, 1.0);
    c = floor(colour.rgb * levels + 0.5) / levels;
    c *= 1.0 - step(ufmThreshold, gradient);
#endif

    gl_FragColor = vec4(clamp(c, 0.0, 1.0), colour.a);
}
