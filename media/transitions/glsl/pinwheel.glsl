// Blades of clip B sweep round the centre like a pinwheel.
vec4 transition(vec2 uv)
{
    vec2 c = (uv - 0.5) * vec2(ratio, 1.0);
    float a = atan(c.y, c.x) + PI;
    float blade = 2.0 * PI / ufmBlades;
    return mod(a, blade) / blade < progress ? getToColor(uv) : getFromColor(uv);
}
