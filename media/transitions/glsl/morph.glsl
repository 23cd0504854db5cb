// Each picture flows along the colour differences of the other: bright
// parts of B pull A towards them while the two cross-fade.
vec4 transition(vec2 uv)
{
    vec4 a = getFromColor(uv);
    vec4 b = getToColor(uv);
    vec2 flow = (a.rg + a.b - b.rg - b.b) * ufmStrength;
    vec4 wa = getFromColor(uv + flow * progress);
    vec4 wb = getToColor(uv - flow * (1.0 - progress));
    return mix(wa, wb, progress);
}
