#version 120
// The colour looks: one grade, shaped by the named constants that each
// look's material sets (see media/filters/catalogue.py for their meaning and
// neutral values), shown at ufmIntensity: 0 is the picture as it came, 1
// the full look.
#include "filter_common.glsl"

uniform float ufmIntensity;
uniform vec3 lookLift;
uniform vec3 lookGamma;
uniform vec3 lookGain;
uniform float lookContrast;
uniform float lookSaturation;
uniform vec3 lookShadow;
uniform vec3 lookHighlight;
uniform float lookFade;
uniform vec4 lookMono;
uniform float lookHue;
uniform float lookVignette;

vec3 grade(vec3 c)
{
    c = c + lookLift * (1.0 - c);
    c = pow(max(c, 0.0), 1.0 / max(lookGamma, vec3(0.01)));
    c *= lookGain;
    if (lookHue != 0.0) {
        c = rotateHue(c, radians(lookHue));
    }
    // Contrast: an S-curve about mid grey, or a flattening towards it.
    c = clamp(c, 0.0, 1.0);
    if (lookContrast > 0.0) {
        c = mix(c, c * c * (3.0 - 2.0 * c), lookContrast);
    } else {
        c = mix(c, vec3(0.5), -lookContrast * 0.5);
    }
    float l = luma(c);
    c = mix(vec3(l), c, lookSaturation);
    // Split toning: tints that fall off towards the other end.
    c += lookShadow * (1.0 - l) * (1.0 - l) + lookHighlight * l * l;
    // A toned monochrome print on paper of the colour lookMono.rgb.
    c = mix(c, vec3(luma(c)) * lookMono.rgb, lookMono.a);
    // A matte print never reaches black.
    c = lookFade + c * (1.0 - lookFade);
    vec2 q = vUv - 0.5;
    c *= 1.0 - lookVignette * smoothstep(0.2, 0.75, length(q) * 1.4142);
    return clamp(c, 0.0, 1.0);
}

void main()
{
    vec4 colour = picture(vUv);
    vec3 graded = grade(colour.rgb);
    gl_FragColor = vec4(mix(colour.rgb, graded, clamp(ufmIntensity, 0.0, 1.0)), colour.a);
}
