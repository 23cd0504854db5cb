// Clip A drips down the frame in uneven columns, uncovering clip B.
vec4 transition(vec2 uv)
{
    float column = floor(uv.x * 80.0);
    float delay = noise2(vec2(column, 0.0)) * 0.4 * ufmDrip;
    float fall = max(progress * (1.0 + 0.4 * ufmDrip) - delay, 0.0);
    fall = fall * fall * 2.0;
    vec2 st = vec2(uv.x, uv.y + fall);
    if (st.y > 1.0) return getToColor(uv);
    return getFromColor(st);
}
