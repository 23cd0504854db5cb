#version 120
// Blurs, glow, sharpening and the mosaic, one define per filter.
//   REGION_BLUR  soft blur inside a rectangle (ufmRect..., fractions of the
//                picture), radius ufmBlurSize * 4 % of the picture height
//   MOSAIC       square cells inside the rectangle, ufmPixelSize of the
//                weighted picture size (ufmImage...Factor) each
//   GLOW         a blurred copy, ufmBlurSize of the picture height wide,
//                screened over the picture by ufmBrightness
//   SHARPEN      unsharp mask, ufmSharpnessStrength 0 leaves it alone
//   GAUSSIAN     two-dimensional Gaussian, sigma 2 pixels
//   GAUSSIAN_X/Y one pass of a separable Gaussian, sigma 3 pixels
// ufmUpdateDefault 1 (outside the clip span the processor set) shows the
// picture unchanged.
#include "filter_common.glsl"

uniform vec4 texelSize;
uniform float ufmUpdateDefault;
uniform float ufmBlurSize;
uniform float ufmRectPosX;
uniform float ufmRectPosY;
uniform float ufmRectWidth;
uniform float ufmRectHeight;
uniform float ufmImageW;
uniform float ufmImageH;
uniform float ufmPixelSize;
uniform float ufmImageWidth;
uniform float ufmImageHeight;
uniform float ufmImageWidthFactor;
uniform float ufmImageHeightFactor;
uniform float ufmBrightness;
uniform float ufmSharpnessStrength;

// One texel in texture coordinates: from the size sent, else the texture's.
vec2 texelOf(float width, float height)
{
    if (width > 0.0 && height > 0.0) {
        return vec2(1.0 / width, 1.0 / height);
    }
    return texelSize.xy;
}

bool insideRect(vec2 uv)
{
    return uv.x >= ufmRectPosX && uv.x <= ufmRectPosX + ufmRectWidth
        && uv.y >= ufmRectPosY && uv.y <= ufmRectPosY + ufmRectHeight;
}

// A disc blur of `radius` texture units: 48 taps on a golden-angle spiral,
// weighted towards the middle.
vec4 discBlur(vec2 uv, vec2 radius)
{
    vec4 sum = picture(uv);
    float total = 1.0;
    for (int i = 1; i <= 48; ++i) {
        float f = float(i) / 48.0;
        float r = sqrt(f);
        float a = float(i) * 2.39996323;
        float w = 1.0 - 0.6 * f;
        sum += picture(uv + vec2(cos(a), sin(a)) * r * radius) * w;
        total += w;
    }
    return sum / total;
}

float gauss(float x, float sigma)
{
    return exp(-(x * x) / (2.0 * sigma * sigma));
}

void main()
{
    vec4 colour = picture(vUv);
    vec4 result = colour;

#if defined(REGION_BLUR)
    if (ufmUpdateDefault < 0.5 && insideRect(vUv)) {
        vec2 texel = texelOf(ufmImageW, ufmImageH);
        float pixels = max(ufmBlurSize, 0.0) * 0.04 / texel.y;
        result = discBlur(vUv, vec2(pixels) * texel);
    }
#elif defined(MOSAIC)
    if (ufmUpdateDefault < 0.5 && insideRect(vUv)) {
        vec2 texel = texelOf(ufmImageWidth, ufmImageHeight);
        vec2 size = 1.0 / texel;
        float cell = max(ufmPixelSize * (size.x * ufmImageWidthFactor + size.y * ufmImageHeightFactor), 1.0);
        vec2 pixel = vUv * size;
        vec2 centre = (floor(pixel / cell) + 0.5) * cell;
        result = picture(centre * texel);
    }
#elif defined(GLOW)
    // The radius is ufmBlurSize of the picture height, round on screen.
    float radius = max(ufmBlurSize, 0.0);
    vec4 blurred = discBlur(vUv, vec2(radius * texelSize.x / texelSize.y, radius));
    vec3 light = blurred.rgb * max(ufmBrightness, 0.0);
    result.rgb = 1.0 - (1.0 - colour.rgb) * (1.0 - clamp(light, 0.0, 1.0));
#elif defined(SHARPEN)
    vec2 t = texelSize.xy;
    vec3 around = picture(vUv + vec2(t.x, 0.0)).rgb + picture(vUv - vec2(t.x, 0.0)).rgb
                + picture(vUv + vec2(0.0, t.y)).rgb + picture(vUv - vec2(0.0, t.y)).rgb;
    result.rgb = colour.rgb + ufmSharpnessStrength * 4.0 * (colour.rgb - around * 0.25);
#elif defined(GAUSSIAN)
    vec2 texel = texelOf(ufmImageW, ufmImageH);
    vec4 sum = vec4(0.0);
    float total = 0.0;
    for (int y = -4; y <= 4; ++y) {
        for (int x = -4; x <= 4; ++x) {
            float w = gauss(float(x), 2.0) * gauss(float(y), 2.0);
            sum += picture(vUv + vec2(float(x), float(y)) * texel) * w;
            total += w;
        }
    }
    result = sum / total;
#elif defined(GAUSSIAN_X) || defined(GAUSSIAN_Y)
    vec2 texel = texelOf(ufmImageW, ufmImageH);
#if defined(GAUSSIAN_X)
    vec2 step = vec2(texel.x, 0.0);
#else
    vec2 step = vec2(0.0, texel.y);
#endif
    vec4 sum = vec4(0.0);
    float total = 0.0;
    for (int i = -9; i <= 9; ++i) {
        float w = gauss(float(i), 3.0);
        sum += picture(vUv + float(i) * step) * w;
        total += w;
    }
    result = sum / total;
#endif

    gl_FragColor = clamp(result, 0.0, 1.0);
}
