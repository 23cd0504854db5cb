// A drop falls in the centre of clip A; its ring spreads and clip B shows
// inside it.
vec4 transition(vec2 uv)
{
    vec2 d = (uv - 0.5) * vec2(ratio, 1.0);
    float dist = length(d);
    float front = progress * length(vec2(ratio, 1.0)) * 0.55;
    if (dist <= front) {
        vec2 offset = (dist > 0.0 ? d / dist : vec2(0.0)) * sin(dist * ufmAmplitude - progress * 40.0) * 0.01;
        vec2 st = uv + offset / vec2(ratio, 1.0) * (1.0 - progress);
        return getToColor(st);
    }
    return getFromColor(uv);
}
