// The frame breaks into tiles that turn from clip A to clip B one by one, in
// a scattered order.
vec4 transition(vec2 uv)
{
    vec2 grid = vec2(ufmCells * ratio, ufmCells);
    vec2 cell = floor(uv * grid);
    float order = noise2(cell);
    float local = clamp((progress - order * 0.7) / 0.3, 0.0, 1.0);
    vec2 f = fract(uv * grid) - 0.5;
    float scale = abs(1.0 - 2.0 * local);
    if (abs(f.x) > scale * 0.5) return vec4(0.0, 0.0, 0.0, 1.0);
    return local < 0.5 ? getFromColor(uv) : getToColor(uv);
}
