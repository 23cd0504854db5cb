#version 120
// Clip animations: the picture appears (ufmAnimIsIn 1) or goes (0) over
// transparency, one define per animation. ufmProgress runs from 0 to 1
// over the animated span; while ufmKeepDefault is 1 the picture is drawn as
// it is. ufmUseEffect 1 softens the moving edges and fades the picture with
// its reveal.
#include "filter_common.glsl"

uniform vec4 texelSize;
uniform float ufmProgress;
uniform float ufmKeepDefault;
uniform float ufmUseEffect;
uniform float ufmAnimIsIn;

const float kPi = 3.14159265;

// 1 where a moving edge has passed (value below limit), over a soft band.
float revealed(float value, float limit, float soft)
{
    return 1.0 - smoothstep(limit - soft, limit + soft, value);
}

vec2 rotate(vec2 p, float a)
{
    float s = sin(a);
    float k = cos(a);
    return vec2(p.x * k - p.y * s, p.x * s + p.y * k);
}

void main()
{
    vec4 plain = picture(vUv);
    if (ufmKeepDefault > 0.5) {
        gl_FragColor = plain;
        return;
    }
    float t = clamp(ufmProgress, 0.0, 1.0);
    // How much of the picture shows: 0 nothing, 1 all of it.
    float v = ufmAnimIsIn > 0.5 ? t : 1.0 - t;
    bool effect = ufmUseEffect > 0.5;
    float soft = effect ? 0.06 : 0.002;
    float aspect = texelSize.y / texelSize.x;
    vec2 uv = vUv;
    float mask = 1.0;
    vec4 colour;
    bool sampled = false;

#if defined(ANIM_FADE)
    mask = v;
#elif defined(ANIM_SLIDE_DOWN)
    uv.y += 1.0 - v;
#elif defined(ANIM_SLIDE_RIGHT)
    uv.x += 1.0 - v;
#elif defined(ANIM_WIPE_DOWN)
    mask = revealed(vUv.y, v * (1.0 + 2.0 * soft) - soft, soft);
#elif defined(ANIM_WIPE_RIGHT)
    mask = revealed(vUv.x, v * (1.0 + 2.0 * soft) - soft, soft);
#elif defined(ANIM_CIRCLE)
    float r = length((vUv - 0.5) * vec2(aspect, 1.0)) / length(vec2(aspect, 1.0) * 0.5);
    mask = revealed(r, v * (1.0 + 2.0 * soft) - soft, soft);
#elif defined(ANIM_RECTANGLE)
    vec2 d = abs(vUv - 0.5) * 2.0;
    mask = revealed(max(d.x, d.y), v * (1.0 + 2.0 * soft) - soft, soft);
#elif defined(ANIM_ROTATE_SCALE)
    vec2 p = (vUv - 0.5) * vec2(aspect, 1.0);
    p = rotate(p, (1.0 - v) * 2.0 * kPi) / max(v, 0.0001);
    uv = p / vec2(aspect, 1.0) + 0.5;
#elif defined(ANIM_BEVEL_LEFT_DOWN)
    mask = revealed((1.0 - vUv.x + vUv.y) * 0.5, v * (1.0 + 2.0 * soft) - soft, soft);
#elif defined(ANIM_BEVEL_RIGHT_DOWN)
    mask = revealed((vUv.x + vUv.y) * 0.5, v * (1.0 + 2.0 * soft) - soft, soft);
#elif defined(ANIM_BARN_DOOR)
    mask = revealed(abs(vUv.x - 0.5) * 2.0, v * (1.0 + 2.0 * soft) - soft, soft);
#elif defined(ANIM_ZOOM_FADE)
    // From three times the size, and transparent, down to the picture.
    uv = (vUv - 0.5) / mix(3.0, 1.0, v) + 0.5;
    mask = v;
#elif defined(ANIM_CLOCK)
    vec2 p = (vUv - 0.5) * vec2(aspect, 1.0);
    float angle = atan(p.x, -p.y) / (2.0 * kPi);
    angle = angle < 0.0 ? angle + 1.0 : angle;
    mask = revealed(angle, v * (1.0 + 2.0 * soft) - soft, soft);
#elif defined(ANIM_GROW)
    uv = (vUv - 0.5) / max(v, 0.0001) + 0.5;
#elif defined(ANIM_LINEAR_BLUR)
    vec4 sum = vec4(0.0);
    float reach = (1.0 - v) * 0.15;
    for (int i = -6; i <= 6; ++i) {
        sum += picture(vUv + vec2(float(i) / 6.0 * reach, 0.0));
    }
    colour = sum / 13.0;
    sampled = true;
    mask = v;
#elif defined(ANIM_GLITCH)
    float strength = 1.0 - v;
    float row = floor(vUv.y * 24.0);
    float beat = floor(t * 12.0);
    float shift = (hash12(vec2(row, beat)) - 0.5) * 0.2 * strength * step(0.5, hash12(vec2(beat, row + 9.0)));
    uv.x += shift;
    vec2 split = vec2(0.03 * strength, 0.0);
    colour = vec4(pictureOrClear(uv + split).r, pictureOrClear(uv).g, pictureOrClear(uv - split).b,
                  pictureOrClear(uv).a);
    sampled = true;
    mask = smoothstep(0.0, 0.4, v);
#elif defined(ANIM_HEXAGONS)
    // Hexagonal cells that shrink from a tenth of the height to nothing.
    float size = (1.0 - v) * 0.1;
    if (size > texelSize.y) {
        vec2 p = vUv * vec2(aspect, 1.0) / size;
        vec2 r = vec2(1.0, 1.7320508);
        vec2 a = mod(p, r) - r * 0.5;
        vec2 b = mod(p - r * 0.5, r) - r * 0.5;
        vec2 centre = dot(a, a) < dot(b, b) ? p - a : p - b;
        uv = centre * size / vec2(aspect, 1.0);
    }
    mask = v;
#elif defined(ANIM_PAGE_CURL)
    // A page turning back from the bottom right: beyond the fold nothing,
    // on the fold the back of the page, mirrored and shaded.
    float position = (vUv.x + vUv.y) * 0.5;
    float fold = v * 1.3 - 0.15;
    float width = 0.12;
    if (position > fold + width) {
        mask = 0.0;
    } else if (position > fold) {
        float back = 2.0 * fold - position + width;
        uv = vUv - vec2(position - back);
        colour = pictureOrClear(uv);
        colour.rgb *= 0.6 + 0.4 * (position - fold) / width;
        sampled = true;
    }
#elif defined(ANIM_GRID_FLIP)
    // A 4 x 4 grid whose cells turn over one after another.
    vec2 cells = vec2(4.0);
    vec2 cell = floor(vUv * cells);
    vec2 inCell = fract(vUv * cells);
    float delay = hash12(cell) * 0.5;
    float turn = clamp((v - delay) / 0.5, 0.0, 1.0);
    float width = sin(turn * kPi * 0.5);
    float x = (inCell.x - 0.5) / max(width, 0.0001) + 0.5;
    mask = (x >= 0.0 && x <= 1.0 && turn > 0.0) ? 1.0 : 0.0;
    uv = (cell + vec2(clamp(x, 0.0, 1.0), inCell.y)) / cells;
#elif defined(ANIM_CUBE)
    // The picture is the side of a cube turning in from the right.
    float visible = max(v, 0.0001);
    float x = (vUv.x - (1.0 - v)) / visible;
    float depth = mix(0.7, 1.0, v);
    float y = (vUv.y - 0.5) / mix(depth, 1.0, x) + 0.5;
    uv = vec2(x, y);
    colour = pictureOrClear(uv);
    colour.rgb *= mix(0.5, 1.0, v);
    sampled = true;
#elif defined(ANIM_DOORWAY)
    // Doors open from the middle onto the picture coming forward.
    mask = revealed(abs(vUv.x - 0.5) * 2.0, v * (1.0 + 2.0 * soft) - soft, soft);
    uv = (vUv - 0.5) / mix(0.6, 1.0, v) + 0.5;
#elif defined(ANIM_SQUEEZE)
    uv.y = (vUv.y - 0.5) / max(v, 0.0001) + 0.5;
#elif defined(ANIM_SWAP)
    // Slides in from the right, small and far, growing to its place.
    float scale = mix(0.6, 1.0, v);
    uv = (vUv - vec2(1.0 - v, 0.0) - 0.5) / scale + 0.5;
#elif defined(ANIM_SWIRL)
    vec2 p = (vUv - 0.5) * vec2(aspect, 1.0);
    float d = length(p);
    p = rotate(p, (1.0 - v) * 8.0 * max(0.6 - d, 0.0));
    uv = p / vec2(aspect, 1.0) + 0.5;
    mask = v;
#elif defined(ANIM_CROSS_ZOOM)
    vec4 sum = vec4(0.0);
    float reach = (1.0 - v) * 0.3;
    for (int i = 0; i <= 9; ++i) {
        sum += picture(0.5 + (vUv - 0.5) * (1.0 - reach * float(i) / 9.0));
    }
    colour = sum / 10.0;
    sampled = true;
    mask = v;
#endif

    if (!sampled) {
        colour = pictureOrClear(uv);
    }
    if (effect) {
        mask *= v;
    }
    gl_FragColor = vec4(colour.rgb, colour.a * clamp(mask, 0.0, 1.0));
}
