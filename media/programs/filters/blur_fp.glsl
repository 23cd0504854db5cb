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
//   GAUSSIAN_PASS_X/Y  the same Gaussian as two one-dimensional passes,
//                the filter drawing the first into a texture of its own
//   GAUSSIAN_X/Y one pass of a separable Gaussian, sigma 3 pixels, times
//                ufmStrength where that is above 0; X drawn smaller than
//                its picture reads every row it stands for
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
uniform float ufmStrength;

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
#elif defined(GAUSSIAN) || defined(GAUSSIAN_PASS_X) || defined(GAUSSIAN_PASS_Y)
    // A 9-tap kernel, sigma 2, read as 5 bilinear fetches a direction: each
    // fetch between two texels weighs them as the kernel does (the offsets
    // and weights below are those of pairs of taps). In two dimensions 25
    // fetches give what 81 taps would; as two passes, 5 + 5.
    vec2 texel = texelOf(ufmImageW, ufmImageH);
    const float offsets[3] = float[3](0.0, 1.4073334, 3.2942150);
    const float weights[3] = float[3](0.204163689, 0.304005360, 0.093912796);
    vec4 sum = vec4(0.0);
#if defined(GAUSSIAN)
    for (int y = -2; y <= 2; ++y) {
        float oy = y < 0 ? -offsets[-y] : offsets[y];
        float wy = weights[y < 0 ? -y : y];
        for (int x = -2; x <= 2; ++x) {
            float ox = x < 0 ? -offsets[-x] : offsets[x];
            sum += picture(vUv + vec2(ox, oy) * texel) * (weights[x < 0 ? -x : x] * wy);
        }
    }
#else
#if defined(GAUSSIAN_PASS_X)
    vec2 step = vec2(texel.x, 0.0);
#else
    vec2 step = vec2(0.0, texel.y);
#endif
    sum = picture(vUv) * weights[0];
    for (int i = 1; i < 3; ++i) {
        sum += (picture(vUv + offsets[i] * step) + picture(vUv - offsets[i] * step)) * weights[i];
    }
#endif
    result = sum;
#elif defined(GAUSSIAN_X) || defined(GAUSSIAN_Y)
    // 19 taps, sigma 3, as 11 fetches: pairs of taps read between texels.
    vec2 texel = texelOf(ufmImageW, ufmImageH);
#if defined(GAUSSIAN_X)
    vec2 step = vec2(texel.x, 0.0);
#else
    vec2 step = vec2(0.0, texel.y);
#endif
    // A canvas widens its background's blur by its strength; none set (0)
    // is the plain kernel.
    step *= ufmStrength > 0.0 ? ufmStrength : 1.0;
    const float offsets[6] = float[6](0.0, 1.4584295, 3.4039848, 5.3518058, 7.3029407, 9.0);
    const float weights[6] = float[6](0.133175996, 0.232618096, 0.135525613, 0.051231140, 0.012557701,
                                      0.001479452);
#if defined(GAUSSIAN_X)
    // Drawn smaller than its picture (a canvas's background), one pixel
    // stands for several rows: the row is read as the mean of bilinear
    // fetches spread over them, two rows each, so that no row is skipped
    // and a sharp edge can't leave a band.
    float rows = abs(dFdy(vUv.y)) / texel.y;
    float reads = clamp(ceil(rows * 0.5 - 0.01), 1.0, 8.0);
    vec4 sum = vec4(0.0);
    for (int r = 0; r < 8; ++r) {
        if (float(r) >= reads) break;
        vec2 uv = vUv + vec2(0.0, ((float(r) + 0.5) / reads - 0.5) * rows * texel.y);
        vec4 row = picture(uv) * weights[0];
        for (int i = 1; i < 6; ++i) {
            row += (picture(uv + offsets[i] * step) + picture(uv - offsets[i] * step)) * weights[i];
        }
        sum += row;
    }
    result = sum / reads;
#else
    vec4 sum = picture(vUv) * weights[0];
    for (int i = 1; i < 6; ++i) {
        sum += (picture(vUv + offsets[i] * step) + picture(vUv - offsets[i] * step)) * weights[i];
    }
    result = sum;
#endif
#endif

    gl_FragColor = clamp(result, 0.0, 1.0);
}
