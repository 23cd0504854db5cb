// A whirlpool winds clip A up in the centre and unwinds into clip B.
vec4 transition(vec2 uv)
{
    vec2 c = (uv - 0.5) * vec2(ratio, 1.0);
    float r = length(c);
    float strength = sin(progress * PI) * ufmTurns * 2.0 * PI;
    float a = atan(c.y, c.x) + strength * max(0.0, 1.0 - r / 0.8);
    vec2 st = vec2(cos(a), sin(a)) * r / vec2(ratio, 1.0) + 0.5;
    return mix(getFromColor(st), getToColor(st), smoothstep(0.35, 0.65, progress));
}
