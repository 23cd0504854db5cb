// Clip A breaks into mirrored wedges that spin, and the wedges settle into
// clip B.
vec4 transition(vec2 uv)
{
    vec2 c = (uv - 0.5) * vec2(ratio, 1.0);
    float r = length(c);
    float wedge = 2.0 * PI / ufmSegments;
    float a = atan(c.y, c.x) + progress * PI;
    a = mod(a, wedge);
    a = min(a, wedge - a);
    vec2 k = vec2(cos(a), sin(a)) * r / vec2(ratio, 1.0) + 0.5;
    k = abs(mod(k + 1.0, 2.0) - 1.0);
    float amount = sin(progress * PI);
    vec4 plain = mix(getFromColor(uv), getToColor(uv), progress);
    vec4 mirrored = mix(getFromColor(k), getToColor(k), progress);
    return mix(plain, mirrored, amount);
}
