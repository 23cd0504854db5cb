// A star of clip B turns and grows from the middle of the frame.
vec4 transition(vec2 uv)
{
    vec2 c = (uv - 0.5) * vec2(ratio, 1.0);
    float a = atan(c.y, c.x) + progress * PI;
    float wedge = 2.0 * PI / ufmPoints;
    float t = abs(mod(a, wedge) - wedge * 0.5) / (wedge * 0.5);
    float radius = progress * 1.4 * mix(0.45, 1.0, t * t);
    return length(c) < radius ? getToColor(uv) : getFromColor(uv);
}
