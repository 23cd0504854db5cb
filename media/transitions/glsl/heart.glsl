// A heart of clip B grows from the middle of the frame.
vec4 transition(vec2 uv)
{
    vec2 p = (uv - vec2(0.5, 0.45)) * vec2(ratio, 1.0) / max(progress * 4.0, 1e-4);
    p.y -= 0.1;
    float x = p.x, y = p.y;
    float inside = pow(x * x + y * y - 0.09, 3.0) - x * x * y * y * y * 0.2;
    return inside <= 0.0 ? getToColor(uv) : getFromColor(uv);
}
