#version 120
// Colour adjustments, one define per filter. Each leaves the picture as it is
// at its neutral settings: brightness 0, alpha 1, contrast 1, saturation 1,
// exposure 0, levels 0 / 0.5 / 1 -> 0 / 1, gamma 1, RGB 1 1 1, shadows 0 and
// highlights 1, temperature 5000 K and tint 0, hue strength 0 (or a hue
// vector along +I), intensity 0.
#include "filter_common.glsl"

uniform vec4 texelSize;
uniform float ufmBrightness;
uniform float ufmAlpha;
uniform float ufmContrast;
uniform float ufmSaturation;
uniform float ufmExposure;
uniform float ufmLevelMinimum;
uniform float ufmLevelMiddle;
uniform float ufmLevelMaximum;
uniform float ufmMinOutput;
uniform float ufmMaxOutput;
uniform float ufmGamma;
uniform float ufmRedAdjustment;
uniform float ufmGreenAdjustment;
uniform float ufmBlueAdjustment;
uniform float ufmShadows;
uniform float ufmHighlights;
uniform float ufmTemperature;
uniform float ufmTint;
uniform float ufmHueI;
uniform float ufmHueQ;
uniform float ufmStrength;
uniform float ufmIntensity;
uniform float ufmSharpnessStrength;

// Shadows 0..1 lifts what is dark; highlights below 1 pulls down what is
// bright. Each works on its own end of the tonal range only.
vec3 shadowsHighlights(vec3 c, float shadows, float highlights)
{
    float l = luma(c);
    float shadowWeight = 1.0 - smoothstep(0.0, 0.55, l);
    float highlightWeight = smoothstep(0.45, 1.0, l);
    c += shadows * shadowWeight * shadowWeight * 0.6 * (1.0 - c);
    c *= 1.0 - (1.0 - highlights) * highlightWeight * highlightWeight * 0.6;
    return c;
}

// Warmer above 5000 K, cooler below; tint above 0 goes to magenta, below to
// green.
vec3 whiteBalance(vec3 c, float kelvin, float tint)
{
    float warmth = clamp((kelvin - 5000.0) / 5000.0, -1.0, 1.0);
    float magenta = clamp(tint / 100.0, -2.0, 2.0);
    return c * vec3(1.0 + 0.25 * warmth, 1.0 - 0.1 * magenta, 1.0 - 0.25 * warmth);
}

vec3 contrast(vec3 c, float k)
{
    return (c - 0.5) * k + 0.5;
}

vec3 saturation(vec3 c, float s)
{
    return mix(vec3(luma(c)), c, s);
}

void main()
{
    vec4 colour = picture(vUv);
    vec3 c = colour.rgb;
    float alpha = colour.a;

#if defined(BRIGHTNESS)
    c += ufmBrightness;
    alpha *= ufmAlpha;
#elif defined(CONTRAST)
    c = contrast(c, ufmContrast);
#elif defined(SATURATION)
    c = saturation(c, ufmSaturation);
#elif defined(EXPOSURE)
    c *= exp2(ufmExposure);
#elif defined(LEVELS)
    // Input black and white points, a midtone that maps to half grey, then
    // the output range.
    float range = max(ufmLevelMaximum - ufmLevelMinimum, 1.0 / 255.0);
    c = clamp((c - ufmLevelMinimum) / range, 0.0, 1.0);
    float middle = clamp(ufmLevelMiddle, 0.01, 0.99);
    if (middle != 0.5) {
        c = pow(c, vec3(log(0.5) / log(middle)));
    }
    c = mix(vec3(ufmMinOutput), vec3(ufmMaxOutput), c);
#elif defined(GAMMA_GRAY)
    // Gamma on the grey level alone: hues and their balance stay.
    float l = luma(c);
    if (l > 0.0 && ufmGamma != 1.0) {
        c *= pow(l, ufmGamma) / l;
    }
#elif defined(RGB)
    c *= vec3(ufmRedAdjustment, ufmGreenAdjustment, ufmBlueAdjustment);
#elif defined(SHADOWS_HIGHLIGHTS)
    c = shadowsHighlights(c, ufmShadows, ufmHighlights);
#elif defined(WHITE_BALANCE)
    c = whiteBalance(c, ufmTemperature, ufmTint);
#elif defined(HUE)
    // The vector (I, Q) names the turn of the hue circle: (1, 0) is none.
    float turn = atan(ufmHueQ, ufmHueI);
    c = mix(c, rotateHue(c, turn), ufmStrength);
#elif defined(HOMOCHROMY)
    c = mix(c, vec3(luma(c)), ufmIntensity);
#elif defined(COLOR_FIX)
    // The photo-fix chain: sharpen first, on the picture as it came, then
    // exposure, brightness, contrast, the two tonal ends, white balance and
    // saturation.
    if (ufmSharpnessStrength != 0.0) {
        vec3 around = picture(vUv + vec2(texelSize.x, 0.0)).rgb + picture(vUv - vec2(texelSize.x, 0.0)).rgb
                    + picture(vUv + vec2(0.0, texelSize.y)).rgb + picture(vUv - vec2(0.0, texelSize.y)).rgb;
        c += ufmSharpnessStrength * (c - around * 0.25) * 2.0;
    }
    c *= exp2(ufmExposure);
    c += ufmBrightness;
    c = contrast(c, ufmContrast);
    c = shadowsHighlights(c, ufmShadows, ufmHighlights);
    c = whiteBalance(c, ufmTemperature, ufmTint);
    c = saturation(c, ufmSaturation);
#endif

    gl_FragColor = vec4(clamp(c, 0.0, 1.0), clamp(alpha, 0.0, 1.0));
}
