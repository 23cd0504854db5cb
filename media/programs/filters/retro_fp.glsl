#version 120
// Old pictures, one define per filter.
//   OLD_TV        scan lines, snow and rolling interference (ufmInterference),
//                 a bulging tube (ufmDistortionScale); time is ufmTime_0_X
//                 seconds of played filter time
//   OLD_MOVIE     sepia print with flicker (ufmLight), ufmScratchNum
//                 scratches and dust changing each frame (ufmTimeScratchLight
//                 frames since the clip's start)
//   SHOW_MACHINE  a projector: a hot spot in the middle, dark edges, a
//                 trembling beam of ufmBrightness and a weaving gate; the
//                 frame is ufmProgress of ufmVideoTime
#include "filter_common.glsl"

uniform vec4 texelSize;
uniform float ufmInterference;
uniform float ufmDistortionScale;
uniform float ufmTime_0_X;
uniform float ufmSin_time_0_X;
uniform float ufmLight;
uniform float ufmScratchNum;
uniform float ufmTimeScratchLight;
uniform float ufmTime;
uniform float ufmBrightness;
uniform float ufmVideoTime;
uniform float ufmProgress;

void main()
{
    vec2 uv = vUv;
    vec3 c;
    float alpha;

#if defined(OLD_TV)
    float time = ufmTime_0_X;
    // The tube: coordinates pushed out towards the corners.
    vec2 q = uv - 0.5;
    uv = 0.5 + q * (1.0 + ufmDistortionScale * 0.3 * dot(q, q));
    // A band of interference rolls down the screen and tears the lines.
    float band = fract(uv.y * 0.5 - time * 0.23);
    float tear = smoothstep(0.0, 0.1, band) * (1.0 - smoothstep(0.1, 0.2, band));
    float jitter = (noise12(vec2(uv.y * 80.0, time * 30.0)) - 0.5) * 0.02 * ufmInterference;
    uv.x += jitter + tear * 0.03 * ufmInterference * ufmSin_time_0_X;
    vec4 colour = pictureOrClear(uv);
    // A little colour bleed to the right.
    vec3 bleed = picture(uv - vec2(2.0 * texelSize.x, 0.0)).rgb;
    c = vec3(colour.r * 0.7 + bleed.r * 0.3, colour.g, colour.b * 0.8 + bleed.b * 0.2);
    c = mix(c, vec3(luma(c)), 0.3);
    float lines = 0.85 + 0.15 * sin(vUv.y / texelSize.y * 3.14159265);
    float snow = hash12(floor(vUv / texelSize.xy) + floor(time * 60.0));
    c = c * lines + (snow - 0.5) * 0.35 * ufmInterference;
    c += tear * 0.15 * ufmInterference;
    c *= 1.0 - 0.5 * dot(q, q) * 2.0;
    alpha = colour.a;
#elif defined(OLD_MOVIE)
    float frame = floor(ufmTimeScratchLight);
    vec4 colour = picture(uv);
    float grey = luma(colour.rgb);
    c = vec3(grey) * vec3(1.07, 0.95, 0.76);
    // Flicker: each frame a little lighter or darker.
    c *= 1.0 + (hash12(vec2(frame, 7.0)) - 0.5) * 0.25 * ufmLight;
    // Scratches: thin light vertical lines that jump from frame to frame.
    int count = int(clamp(ufmScratchNum, 0.0, 8.0));
    for (int i = 0; i < 8; ++i) {
        if (i >= count) {
            break;
        }
        float x = hash12(vec2(frame, float(i) * 13.0));
        float width = 0.6 * texelSize.x * (1.0 + 2.0 * hash12(vec2(float(i), frame + 3.0)));
        float line = 1.0 - smoothstep(width * 0.5, width, abs(vUv.x - x));
        float fade = noise12(vec2(float(i) * 5.0, vUv.y * 6.0 + frame));
        c = mix(c, vec3(0.95, 0.92, 0.85), line * fade);
    }
    // Dust: a few dark specks.
    float speck = hash12(floor(vUv / (texelSize.xy * 3.0)) + frame * 17.0);
    c *= 1.0 - step(0.9985, speck) * 0.7;
    vec2 q = vUv - 0.5;
    c *= 1.0 - dot(q, q) * 1.2;
    alpha = colour.a;
#elif defined(SHOW_MACHINE)
    float frame = floor(ufmProgress * ufmVideoTime);
    // The gate weaves: the picture shifts by a pixel or two between frames.
    uv.y += (hash12(vec2(frame, 1.0)) - 0.5) * 3.0 * texelSize.y;
    uv.x += (hash12(vec2(frame, 2.0)) - 0.5) * 1.5 * texelSize.x;
    vec4 colour = picture(uv);
    vec2 q = (vUv - 0.5) * vec2(texelSize.y / texelSize.x, 1.0);
    float beam = 1.0 - smoothstep(0.2, 0.9, length(q));
    float tremble = 1.0 + (hash12(vec2(frame, 3.0)) - 0.5) * 0.3;
    c = colour.rgb * vec3(1.04, 1.0, 0.9);
    c = c * (0.55 + 0.45 * beam) + ufmBrightness * beam * tremble * 0.5;
    alpha = colour.a;
#endif

    gl_FragColor = vec4(clamp(c, 0.0, 1.0), alpha);
}
