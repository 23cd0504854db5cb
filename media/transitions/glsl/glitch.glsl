// Bands of the frame tear sideways with split colour, and the picture
// jumps from clip A to clip B.
vec4 transition(vec2 uv)
{
    float amount = sin(progress * PI);
    float beat = floor(progress * 12.0);
    float band = floor(uv.y * 24.0);
    float tear = (noise2(vec2(band, beat)) - 0.5) * 2.0 * ufmStrength * amount;
    tear *= step(0.6, noise2(vec2(beat, band * 3.0)));
    vec2 st = vec2(uv.x + tear, uv.y);
    float shift = ufmStrength * 0.1 * amount;
    bool showB = noise2(vec2(band, beat + 7.0)) < progress;
    vec4 r = showB ? getToColor(st + vec2(shift, 0.0)) : getFromColor(st + vec2(shift, 0.0));
    vec4 g = showB ? getToColor(st) : getFromColor(st);
    vec4 b = showB ? getToColor(st - vec2(shift, 0.0)) : getFromColor(st - vec2(shift, 0.0));
    return vec4(r.r, g.g, b.b, g.a);
}
