#version 120
// Effects that play over the clip, one define per filter; ufmProgress is the
// position over the clip's length, 0 to 1.
//   SHAKE  the picture shakes: one cycle every 250 / ufmShakeHz frames of the
//          ufmVideoTime-frame clip, by ufmShakeSizeX and Y (tenths of the
//          picture) and a pumping zoom of ufmShakeSizeZ; ufmIsBlur smears it
//          along the motion, ufmIsRgb splits the colours
//   FLASH  a white flash at the start that fades by mid-clip; ufmStrength
//          50 is full white
//   FADE   fades in over ufmVideoInTime seconds and out over the last
//          ufmVideoOutTime seconds, each when its switch (ufmVideoIn,
//          ufmVideoOut) is 1; the clip is ufmPlaytime frames at ufmFPS
#include "filter_common.glsl"

uniform vec4 texelSize;
uniform float ufmProgress;
uniform float ufmVideoTime;
uniform float ufmShakeHz;
uniform float ufmShakeSizeX;
uniform float ufmShakeSizeY;
uniform float ufmShakeSizeZ;
uniform float ufmIsBlur;
uniform float ufmIsRgb;
uniform float ufmStrength;
uniform float ufmPlaytime;
uniform float ufmFPS;
uniform float ufmVideoIn;
uniform float ufmVideoOut;
uniform float ufmVideoInTime;
uniform float ufmVideoOutTime;

const float kTau = 6.28318531;

#if defined(SHAKE)
vec2 shakeAt(float cycles)
{
    return vec2(sin(kTau * cycles) * ufmShakeSizeX, sin(kTau * cycles * 1.37 + 1.1) * ufmShakeSizeY) * 0.1;
}
#endif

void main()
{
    vec4 result;

#if defined(SHAKE)
    float cycles = ufmProgress * ufmVideoTime * ufmShakeHz / 250.0;
    vec2 offset = shakeAt(cycles);
    // The zoom never shows the picture's edges, whatever the shake.
    float zoom = 1.0 + abs(ufmShakeSizeX) * 0.2 + abs(ufmShakeSizeY) * 0.2
               + ufmShakeSizeZ * 0.1 * (0.5 + 0.5 * sin(kTau * cycles * 0.71));
    vec2 uv = (vUv - 0.5) / zoom + 0.5 - offset / zoom;
    vec2 motion = (offset - shakeAt(cycles - 0.08)) / zoom;
    vec4 sum = vec4(0.0);
    int taps = ufmIsBlur > 0.5 ? 7 : 1;
    for (int i = 0; i < 7; ++i) {
        if (i >= taps) {
            break;
        }
        sum += picture(uv + motion * float(i) / 6.0);
    }
    result = sum / float(taps);
    if (ufmIsRgb > 0.5) {
        vec2 split = motion * 0.5 + vec2(texelSize.x * 2.0, 0.0) * length(offset) * 10.0;
        result.r = picture(uv + split).r;
        result.b = picture(uv - split).b;
    }
#elif defined(FLASH)
    vec4 colour = picture(vUv);
    float white = clamp(ufmStrength / 50.0, 0.0, 1.0) * (1.0 - smoothstep(0.0, 0.5, ufmProgress));
    result = vec4(mix(colour.rgb * (1.0 + white), vec3(1.0), white), colour.a);
#elif defined(FADE)
    vec4 colour = picture(vUv);
    float fps = ufmFPS > 0.0 ? ufmFPS : 25.0;
    float clipSeconds = ufmPlaytime / fps;
    float seconds = ufmProgress * clipSeconds;
    float opacity = 1.0;
    if (ufmVideoIn > 0.5 && ufmVideoInTime > 0.0) {
        opacity = min(opacity, clamp(seconds / ufmVideoInTime, 0.0, 1.0));
    }
    if (ufmVideoOut > 0.5 && ufmVideoOutTime > 0.0) {
        opacity = min(opacity, clamp((clipSeconds - seconds) / ufmVideoOutTime, 0.0, 1.0));
    }
    result = vec4(colour.rgb, colour.a * opacity);
#endif

    gl_FragColor = clamp(result, 0.0, 1.0);
}
