#version 120
// Tone and colour-key filters, one define per filter:
//   VIGNETTE           corners darkened by ufmAlpha, from ufmRadius (a share
//                      of the half-diagonal) over a soft ufmEclosion band
//   LIGHT_MIX          a gradient map: dark parts take ufmSecondColor, light
//                      parts ufmFirstColor (white and black: a grey picture)
//   LIGHT_WHITE_BLACK  black or white by the grey level against ufmThreshold
//   COLOUR_KEY         keys out green (ufmTypeChose 0), blue (1) or
//                      ufmColor (2): chroma distance below ufmDiffX is
//                      transparent, over a soft band of ufmDiffY; ufmDiffZ
//                      takes the key's spill out of what remains
#include "filter_common.glsl"

uniform vec4 texelSize;
uniform float ufmAlpha;
uniform float ufmRadius;
uniform float ufmEclosion;
uniform float ufmImageW;
uniform float ufmImageH;
uniform float ufmFirstColorR;
uniform float ufmFirstColorG;
uniform float ufmFirstColorB;
uniform float ufmFirstColorA;
uniform float ufmSecondColorR;
uniform float ufmSecondColorG;
uniform float ufmSecondColorB;
uniform float ufmSecondColorA;
uniform float ufmThreshold;
uniform float ufmColorR;
uniform float ufmColorG;
uniform float ufmColorB;
uniform float ufmTypeChose;
uniform float ufmDiffX;
uniform float ufmDiffY;
uniform float ufmDiffZ;

vec2 chroma(vec3 c)
{
    return vec2(dot(c, vec3(-0.168736, -0.331264, 0.5)), dot(c, vec3(0.5, -0.418688, -0.081312)));
}

void main()
{
    vec4 colour = picture(vUv);
    vec3 c = colour.rgb;
    float alpha = colour.a;

#if defined(VIGNETTE)
    float aspect = aspectOf(ufmImageW, ufmImageH, texelSize);
    vec2 p = (vUv - 0.5) * vec2(aspect, 1.0);
    float d = length(p) / length(vec2(aspect, 1.0) * 0.5);
    float dark = smoothstep(ufmRadius, ufmRadius + max(ufmEclosion, 0.001), d) * ufmAlpha;
    c *= 1.0 - clamp(dark, 0.0, 1.0);
#elif defined(LIGHT_MIX)
    vec4 light = vec4(ufmFirstColorR, ufmFirstColorG, ufmFirstColorB, ufmFirstColorA);
    vec4 dark = vec4(ufmSecondColorR, ufmSecondColorG, ufmSecondColorB, ufmSecondColorA);
    vec4 mapped = mix(dark, light, luma(c));
    c = mapped.rgb;
    alpha *= mapped.a;
#elif defined(LIGHT_WHITE_BLACK)
    c = vec3(step(ufmThreshold, luma(c)));
#elif defined(COLOUR_KEY)
    vec3 key = vec3(0.0, 1.0, 0.0);
    if (ufmTypeChose > 1.5) {
        key = vec3(ufmColorR, ufmColorG, ufmColorB);
    } else if (ufmTypeChose > 0.5) {
        key = vec3(0.0, 0.0, 1.0);
    }
    float distance = length(chroma(c) - chroma(key));
    float keep = smoothstep(ufmDiffX, ufmDiffX + max(ufmDiffY, 0.001), distance);
    alpha *= keep;
    // What stays near the key keeps a cast of it: grey it out.
    float spill = 1.0 - smoothstep(ufmDiffX, ufmDiffX + 2.0 * max(ufmDiffY, 0.001), distance);
    c = mix(c, vec3(luma(c)), clamp(ufmDiffZ, 0.0, 1.0) * spill);
#endif

    gl_FragColor = vec4(clamp(c, 0.0, 1.0), clamp(alpha, 0.0, 1.0));
}
