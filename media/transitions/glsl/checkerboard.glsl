// Squares of a checkerboard turn to clip B, the dark ones first.
vec4 transition(vec2 uv)
{
    vec2 cell = floor(uv * vec2(ufmCells * ratio, ufmCells));
    float dark = mod(cell.x + cell.y, 2.0);
    float local = clamp(progress * 2.0 - dark, 0.0, 1.0);
    vec2 f = fract(uv * vec2(ufmCells * ratio, ufmCells));
    return f.y < local ? getToColor(uv) : getFromColor(uv);
}
