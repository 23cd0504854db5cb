// Dots of clip B open on a grid, the ones nearer the top left first, and
// grow until they cover clip A.
vec4 transition(vec2 uv)
{
    vec2 grid = vec2(ufmDots * ratio, ufmDots);
    vec2 cell = floor(uv * grid);
    vec2 f = fract(uv * grid) - 0.5;
    float delay = (cell.x / grid.x + (1.0 - cell.y / grid.y)) * 0.25;
    float r = clamp((progress - delay) / 0.5, 0.0, 1.0) * 0.75;
    return length(f) < r ? getToColor(uv) : getFromColor(uv);
}
