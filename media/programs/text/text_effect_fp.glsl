#version 120
// The effect programs of animated text clips, one define per effect. Each
// shows a track's render texture as TextOutMat_FP does, and reveals it over
// ufmProgress (0 to 1 over the clip): the text comes in until the first end
// time, stands, and leaves from the second start time on (a second start of
// 1 keeps it to the end); times are shares of the clip. The timed wipes run
// all of that inside the window from mTextStartTime to mTextEndTime.
//   WINDOW_SLICE     window slats open from their tops, then close
//   PIXEL            a mosaic whose blocks appear and sharpen, then coarsen
//   PIN_WHEEL        eight blades sweep round the centre
//   SPIN_CLOCK       a clock hand sweeps from twelve o'clock
//   VERTICAL_WIPE    a wipe from the top down, then out at the bottom
//   HORIZONTAL_WIPE  a wipe from left to right, then out at the right
//   HORIZONTAL_TWO   opens from the middle to both sides, closes back
//   VERTICAL_TWO     opens from the middle up and down, closes back
//   KARAOKE          always shown; the cover colour fills the ink from the
//                    left as the clip plays
uniform sampler2D inputImageTexture;
uniform vec4 texelSize;
uniform float textCanvasMaxX;
uniform float textCanvasMinX;
uniform float textCanvasMaxY;
uniform float textCanvasMinY;
uniform float ufmProgress;
uniform float mTextFirstEndTime;
uniform float mTextSecendStartTime;
#ifdef TIMED
uniform float mTextStartTime;
uniform float mTextEndTime;
#endif
#ifdef KARAOKE
uniform float textCoverColR;
uniform float textCoverColG;
uniform float textCoverColB;
#endif

varying vec2 oUv0;

// Width of a soft edge, in the unit of what is wiped.
const float kSoft = 0.02;

// 1 where t lies before the moving edge, 0 after it; all of [0, 1] at 1.
float before(float t, float edge)
{
    return edge >= 1.0 ? 1.0 : clamp((edge - t) / kSoft, 0.0, 1.0);
}

// How far the text has come in (x) and gone out (y), each 0 to 1.
vec2 phases(float p)
{
#ifdef TIMED
    float span = mTextEndTime - mTextStartTime;
    if (span <= 0.0 || p < mTextStartTime || p > mTextEndTime) return vec2(0.0, 1.0);
    p = (p - mTextStartTime) / span;
#endif
    float f = mTextFirstEndTime;
    float g = mTextSecendStartTime;
    float enter = f <= 0.0 ? 1.0 : clamp(p / f, 0.0, 1.0);
    float leave = g >= 1.0 ? 0.0 : clamp((p - g) / (1.0 - g), 0.0, 1.0);
    return vec2(enter, leave);
}

// Shown between the edge coming in and the edge going out.
float between(float t, vec2 ph)
{
    return before(t, ph.x) * (1.0 - before(t, ph.y));
}

vec4 ink(vec2 uv)
{
    vec4 c = texture2D(inputImageTexture, uv);
    return vec4(c.rgb / max(c.a, 1.0 / 255.0), c.a);
}

float hash(vec2 p)
{
    return fract(sin(dot(p, vec2(12.9898, 78.233))) * 43758.5453);
}

void main()
{
    float y = 1.0 - oUv0.y;
    if (oUv0.x < textCanvasMinX || oUv0.x > textCanvasMaxX || y < textCanvasMinY || y > textCanvasMaxY)
        discard;
    // Place in the canvas window: u from the left, v from the top.
    float u = (oUv0.x - textCanvasMinX) / max(textCanvasMaxX - textCanvasMinX, 1e-6);
    float v = (textCanvasMaxY - y) / max(textCanvasMaxY - textCanvasMinY, 1e-6);
    vec2 ph = phases(ufmProgress);
    vec4 c = ink(oUv0);
    float mask = 1.0;
    // Only #ifdef blocks: the engine's preprocessor knows no #elif.
#ifdef WINDOW_SLICE
    mask = between(fract(v * 8.0), ph);
#endif
#ifdef PIXEL
    float clear = ph.x * (1.0 - ph.y);
    if (clear < 1.0) {
        float cell = floor(mix(24.0, 2.0, clear));
        vec2 index = floor(oUv0 / (texelSize.xy * cell));
        c = ink((index + 0.5) * texelSize.xy * cell);
        mask = hash(index) < clear ? 1.0 : 0.0;
    }
#endif
#ifdef ROUND
    // Angle round the window's centre, clockwise from twelve o'clock, in
    // turns; pixels keep it round on a wide picture.
    vec2 centre = vec2(textCanvasMinX + textCanvasMaxX, 2.0 - textCanvasMinY - textCanvasMaxY) * 0.5;
    vec2 d = (oUv0 - centre) / texelSize.xy;
    float turn = fract(atan(d.x, -d.y) / 6.2831853 + 1.0);
#ifdef PIN_WHEEL
    mask = between(fract(turn * 8.0), ph);
#endif
#ifdef SPIN_CLOCK
    mask = between(turn, ph);
#endif
#endif
#ifdef VERTICAL_WIPE
    mask = between(v, ph);
#endif
#ifdef HORIZONTAL_WIPE
    mask = between(u, ph);
#endif
#ifdef TWO
#ifdef HORIZONTAL_TWO
    float m = abs(u - 0.5) * 2.0;
#endif
#ifdef VERTICAL_TWO
    float m = abs(v - 0.5) * 2.0;
#endif
    mask = before(m, ph.x) * before(m, 1.0 - ph.y);
#endif
#ifdef KARAOKE
    float covered = before(u, ufmProgress);
    c.rgb = mix(c.rgb, vec3(textCoverColR, textCoverColG, textCoverColB), covered);
#endif
    gl_FragColor = vec4(c.rgb, c.a * mask);
}
