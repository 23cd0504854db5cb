// The frame flips about its vertical axis like a card: A on the front, B on
// the back, narrowing to a line at half way.
vec4 transition(vec2 uv)
{
    float w = abs(cos(progress * PI));
    float x = (uv.x - 0.5) / max(w, 1e-4) + 0.5;
    if (x < 0.0 || x > 1.0) return vec4(0.0, 0.0, 0.0, 1.0);
    vec2 st = vec2(x, uv.y);
    float light = 0.6 + 0.4 * w;
    return (progress < 0.5 ? getFromColor(st) : getToColor(st)) * light;
}
